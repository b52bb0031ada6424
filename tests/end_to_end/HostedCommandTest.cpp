// The program's own binary against a model of the hosted service, one process for each call.

#include "end_to_end/CommandFixture.h"
#include "foundation/SystemClock.h"
#include "support/PrivateKeyring.h"
#include "support/provider/HostedModel.h"

#include <gmock/gmock.h>

#include <QFile>

namespace zelvane::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class HostedCommand : public Commands
{
protected:
    HostedCommand()
    {
        model.translator = [](const QString& text) { return QStringLiteral("de:") + text; };
        provider.setHandler(
            [this](const RecordedRequest& request) { return model.answerTo(request); });
        run({"defaults", "write", "zv.endpoint.Zelvane",
             provider.url().toString().toUtf8().constData()});
    }

    Ended translate() { return run({"translate", "--to", "German", "--engine", "zelvane", "hi"}); }

    [[nodiscard]] QByteArray installId()
    {
        return QByteArray::fromStdString(run({"defaults", "read", "zv.installId"}).output)
            .trimmed();
    }
    [[nodiscard]] qsizetype registrations() const
    {
        return std::ranges::count_if(provider.requests(), [](const RecordedRequest& request) {
            return request.target() == "/v1/register";
        });
    }

    void useKeyring()
    {
        ASSERT_TRUE(keyring.start(PrivateKeyring::State::unlocked));
        const QString address = QStringLiteral("DBUS_SESSION_BUS_ADDRESS");
        environment.insert(address, keyring.environment().value(address));
    }

    SystemClock clock;
    HostedModel model{clock};
    PrivateKeyring keyring;
};

TEST_F(HostedCommand, registersAtTheFirstCallAndKeepsTheTokenInTheKeyring)
{
    useKeyring();
    for (int call = 0; call < 3; ++call) {
        const Ended ended = translate();
        EXPECT_EQ(ended.output, "de:hi\n");
        EXPECT_EQ(ended.errors, "");
        EXPECT_EQ(ended.status, 0);
    }
    EXPECT_EQ(registrations(), 1);
    ASSERT_EQ(model.installations().size(), 1);
    EXPECT_EQ(installId(), model.installations().firstKey().toUtf8());
    EXPECT_EQ(model.installations().first().translations, 3);
    EXPECT_EQ(provider.requests().front().header("X-App-Version"), "0.1.0");
}

TEST_F(HostedCommand, worksWithoutAKeyringAndWritesTheTokenNowhere)
{
    EXPECT_EQ(translate().output, "de:hi\n");
    const QByteArray token = model.installations().first().token;
    const Ended traced =
        run({"translate", "--to", "German", "--engine", "zelvane", "--trace", "hi"});
    EXPECT_EQ(traced.output, "de:hi\n");
    EXPECT_THAT(traced.errors, Not(HasSubstr(token.toStdString())));
    EXPECT_THAT(run({"defaults", "list"}).output, Not(HasSubstr(token.toStdString())));
    for (const RecordedRequest& request : provider.requests()) {
        EXPECT_FALSE(request.requestLine.contains(token));
        EXPECT_FALSE(request.body.contains(token));
        EXPECT_FALSE(request.header("Authorization").contains("command-key"));
    }
}

TEST_F(HostedCommand, outlivesARevokedToken)
{
    useKeyring();
    EXPECT_EQ(translate().output, "de:hi\n");
    const QByteArray id = installId();
    ASSERT_TRUE(model.revokeToken(QString::fromUtf8(id)));
    EXPECT_EQ(translate().output, "de:hi\n");
    EXPECT_NE(installId(), id);
    EXPECT_EQ(translate().output, "de:hi\n");
    EXPECT_EQ(registrations(), 2);
}

TEST_F(HostedCommand, failsInTheWordsOfTheService)
{
    useKeyring();
    EXPECT_EQ(translate().status, 0);
    ASSERT_TRUE(model.ban(QString::fromUtf8(installId()), QStringLiteral("spam")));
    const Ended banned = translate();
    EXPECT_EQ(banned.status, 1);
    EXPECT_EQ(banned.output, "");
    EXPECT_EQ(banned.errors, "zelvane-desk: This install is blocked: spam\n");
    ASSERT_TRUE(model.unban(QString::fromUtf8(installId())));
    model.rules.minuteLimit = 0;
    model.rules.retryHint = HostedRules::RetryHint::none;
    EXPECT_EQ(translate().errors, "zelvane-desk: Too many requests. Try again in 1 minute(s).\n");
}

TEST_F(HostedCommand, saysThatTheServiceIsOutOfReach)
{
    run({"defaults", "write", "zv.endpoint.Zelvane", "http://127.0.0.1:9"});
    const Ended ended = translate();
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.errors,
              "zelvane-desk: Zelvane Best&Fast (Online) can't be reached; check the network, or "
              "choose another engine with --engine NAME\n");
}

TEST_F(HostedCommand, usesTheAddressOfTheUsersOwn)
{
    run({"defaults", "write", "zv.cloudflareWorkerURL", "nonsense"});
    EXPECT_EQ(translate().errors, "zelvane-desk: Invalid Cloudflare Worker URL.\n");
    const QByteArray address = " " + provider.url(QStringLiteral("//")).toString().toUtf8() + " ";
    run({"defaults", "write", "zv.endpoint.Zelvane", "http://127.0.0.1:9"});
    run({"defaults", "write", "zv.cloudflareWorkerURL", address.constData()});
    EXPECT_EQ(translate().output, "de:hi\n");
}

TEST_F(HostedCommand, listsTheOneModelOfTheConfiguration)
{
    EXPECT_EQ(run({"models", "--engine", "zelvane"}).output, "gemini-3.1-flash-lite\n");
    EXPECT_TRUE(provider.requests().empty());
    model.rules.model = QStringLiteral("model-of-today");
    EXPECT_EQ(translate().status, 0);
    EXPECT_EQ(run({"models", "--engine", "zelvane"}).output, "model-of-today\n");
}

} // namespace
} // namespace zelvane::test
