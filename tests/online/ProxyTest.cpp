// Translations of a provider that can be reached through a proxy only.

#include "online/ConnectProxy.h"
#include "online/EngineFixture.h"
#include "online/GeminiClient.h"
#include "support/TrustLoopbackServer.h"

#include <gmock/gmock.h>

#include <QNetworkProxyFactory>

namespace zelvane::test {
namespace {

using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr char goodAnswer[] = R"({"candidates":[{"content":{"parts":[{"text":"Hallo"}]}}]})";

/// Sends everything that may go through a proxy to this one.
class OneProxy final : public QNetworkProxyFactory
{
public:
    explicit OneProxy(QNetworkProxy proxy)
        : m_proxy(std::move(proxy))
    {
    }
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& /*query*/) override
    {
        return {m_proxy};
    }

private:
    QNetworkProxy m_proxy;
};

class ThroughAProxy : public ProviderFixture
{
protected:
    ThroughAProxy()
    {
        defaults.setValue(QStringLiteral("zv.endpoint.Gemini"),
                          QStringLiteral("https://provider.invalid"));
        provider.setHandler([](const RecordedRequest&) { return Answer::json(200, goodAnswer); });
    }
    ~ThroughAProxy() override { QNetworkProxyFactory::setApplicationProxyFactory(nullptr); }

    static void use(const ConnectProxy& proxy, const QString& user = {},
                    const QString& password = {})
    {
        QNetworkProxyFactory::setApplicationProxyFactory(new OneProxy(QNetworkProxy(
            QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), proxy.port(), user, password)));
    }

    CallOutcome<QString> translate()
    {
        return outcomeOf(client.translate(requestFor(AIProvider::gemini), {}));
    }

    static std::vector<std::string> texts(const ConnectProxy& proxy)
    {
        std::vector<std::string> heads;
        for (const QByteArray& head : proxy.heads()) {
            heads.push_back(head.toStdString());
        }
        return heads;
    }

    const TrustLoopbackServer trust;
    LoopbackHttpServer provider{LoopbackHttpServer::Security::selfSigned};
    GeminiClient client{transport, defaults};
};

TEST_F(ThroughAProxy, aTranslationIsTunnelledSoThatTheProxySeesNeitherKeyNorText)
{
    const ConnectProxy proxy(provider.port());
    use(proxy);
    const auto outcome = translate();
    EXPECT_EQ(outcome.value, QStringLiteral("Hallo")) << outcome.text.toStdString();
    ASSERT_THAT(texts(proxy), SizeIs(1));
    EXPECT_THAT(texts(proxy).front(), StartsWith("CONNECT provider.invalid:443 HTTP/1.1\r\n"));
    EXPECT_THAT(texts(proxy).front(), Not(HasSubstr("key-1234567890")));
    ASSERT_THAT(provider.requests(), SizeIs(1));
    EXPECT_TRUE(provider.requests().front().target().endsWith("?key=key-1234567890"));
    EXPECT_TRUE(provider.requests().front().header("Proxy-Authorization").isNull());
}

TEST_F(ThroughAProxy, translationsShareATunnel)
{
    const ConnectProxy proxy(provider.port());
    use(proxy);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(translate().value, QStringLiteral("Hallo"));
    }
    EXPECT_THAT(texts(proxy), SizeIs(1));
    EXPECT_EQ(provider.acceptedConnections(), 1);
}

TEST_F(ThroughAProxy, theProxyGetsItsPasswordAndNothingElse)
{
    const ConnectProxy proxy(provider.port(), "Basic bWU6c2VzYW1l");
    use(proxy, QStringLiteral("me"), QStringLiteral("sesame"));
    const auto outcome = translate();
    EXPECT_EQ(outcome.value, QStringLiteral("Hallo")) << outcome.text.toStdString();
    ASSERT_FALSE(proxy.heads().isEmpty());
    EXPECT_TRUE(proxy.heads().last().contains("\r\nProxy-Authorization: Basic bWU6c2VzYW1l\r\n"));
    EXPECT_THAT(texts(proxy), Each(Not(HasSubstr("key-1234567890"))));
    EXPECT_THAT(provider.requests(), SizeIs(1));
    EXPECT_TRUE(provider.requests().front().header("Proxy-Authorization").isNull());
}

TEST_F(ThroughAProxy, aWrongPasswordForTheProxyIsAFailureOfTheProxy)
{
    const ConnectProxy proxy(provider.port(), "Basic bWU6c2VzYW1l");
    use(proxy, QStringLiteral("me"), QStringLiteral("wrong"));
    const auto outcome = translate();
    EXPECT_EQ(outcome.transport, TransportError::Kind::connection);
    EXPECT_EQ(outcome.text,
              QStringLiteral("The proxy server does not connect to provider.invalid."));
    EXPECT_EQ(provider.acceptedConnections(), 0);
}

TEST_F(ThroughAProxy, theCertificateIsVerifiedAllTheSame)
{
    const ConnectProxy proxy(provider.port());
    use(proxy);
    defaults.setValue(QStringLiteral("zv.endpoint.Gemini"),
                      QStringLiteral("https://other.invalid"));
    EXPECT_EQ(translate().text, QStringLiteral("The certificate of other.invalid is not trusted."));
    EXPECT_TRUE(provider.requests().empty());
}

} // namespace
} // namespace zelvane::test
