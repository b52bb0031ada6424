#include "desktop/linux/session/ProgramOnBus.h"

#include "desktop/FlowFixture.h"
#include "desktop/HeldEngine.h"
#include "desktop/linux/session/BusNames.h"
#include "desktop/linux/session/PrivateBus.h"
#include "desktop/linux/session/ServicesAdaptor.h"
#include "support/Await.h"

#include <gmock/gmock.h>

#include <QDBusArgument>
#include <QDBusPendingCall>

namespace zelvane::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class ProgramOnBusTest : public FlowFixture
{
protected:
    ProgramOnBusTest()
    {
        settings.setProvider(AIProvider::smartOffline);
        settings.setPairs({pair});
        settings.setDoubleHotKeyWindow(false);
        QCoreApplication::sendPostedEvents();
        log.clear();
        offer();
    }

    void offer()
    {
        program = std::make_unique<ProgramOnBus>(
            server, instanceName({}),
            ProgramOnBus::Parts{services, control, QStringLiteral("1.2.3")});
    }
    [[nodiscard]] TranslationDispatch::Engines engines()
    {
        return {nullptr, nullptr, {{AIProvider::smartOffline, &engine}}, nullptr};
    }
    [[nodiscard]] ProgramControl::Actions actions()
    {
        return {[this] { log << QStringLiteral("reopen"); }, [] { return true; },
                [] { return true; }, [] {}, [this] { log << QStringLiteral("settings"); }};
    }

    [[nodiscard]] QDBusPendingCall begin(const QString& interface, const char* method,
                                         const QVariantList& arguments = {})
    {
        QDBusMessage call = QDBusMessage::createMethodCall(instanceName({}), busObjectPath(),
                                                           interface, QString::fromLatin1(method));
        call.setArguments(arguments);
        return client.asyncCall(call);
    }
    QDBusMessage call(const QString& interface, const char* method,
                      const QVariantList& arguments = {})
    {
        const QDBusPendingCall pending = begin(interface, method, arguments);
        EXPECT_TRUE(waitUntil([&] { return pending.isFinished(); }));
        return pending.reply();
    }
    QDBusMessage translate(const char* method, const QString& text)
    {
        return call(servicesInterface(), method, {text});
    }

    PrivateBus bus;
    QDBusConnection server = bus.connect();
    QDBusConnection client = bus.connect();
    HeldEngine engine;
    TranslationDispatch dispatch{settings, defaults, trace, engines()};
    FakeHotKeyRegistrar registrar;
    HotKeyManager hotKeys{registrar};
    FakeOptionClickMenu optionMenu{log};
    FakeAlertPresenter alerts{log};
    FakeWindows windows{log};
    AppModel model{{settings, flow, hotKeys, optionMenu, permission, alerts, windows, clock}};
    ServicesProvider services{{settings, dispatch, trace, windows}};
    ProgramControl control{{settings, model, windows}, actions()};
    std::unique_ptr<ProgramOnBus> program;
};

TEST_F(ProgramOnBusTest, translatesATextOverTheBus)
{
    EXPECT_EQ(program->shortcoming(), std::nullopt);
    const QDBusMessage reply = translate("TranslatePair1", QStringLiteral("hello wörld"));
    ASSERT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
    EXPECT_EQ(reply.signature(), QStringLiteral("s"));
    EXPECT_EQ(reply.arguments().value(0).toString(), QStringLiteral("Hallo Welt"));
    EXPECT_EQ(engine.requests.first().text, QStringLiteral("hello wörld"));
    EXPECT_THAT(log, ElementsAre());
}

TEST_F(ProgramOnBusTest, theOtherFormShowsThePopupAsWell)
{
    EXPECT_EQ(translate("TranslatePair1UI", QStringLiteral(" hello ")).arguments().value(0),
              QStringLiteral("Hallo Welt"));
    EXPECT_TRUE(waitUntil([&] { return !log.isEmpty(); }));
    EXPECT_THAT(log, ElementsAre(QStringLiteral("popup  hello  | Hallo Welt")));
}

TEST_F(ProgramOnBusTest, aFailureIsAnErrorWithItsText)
{
    for (const char* entry :
         {"TranslatePair2", "TranslatePair2UI", "TranslatePair3", "TranslatePair3UI"}) {
        const QDBusMessage reply = translate(entry, QStringLiteral("hello"));
        EXPECT_EQ(reply.errorName(), QStringLiteral("org.zelvane.desk.Error.Failed"));
        EXPECT_EQ(reply.errorMessage(),
                  QStringLiteral("Language pair slot %1 is not configured.").arg(entry[13]));
    }
    EXPECT_EQ(translate("TranslatePair1", QStringLiteral(" ")).errorMessage(),
              QStringLiteral("No text selected."));
}

TEST_F(ProgramOnBusTest, callsDoNotWaitForEachOtherAndTheirNumberHasALimit)
{
    engine.answer.reset();
    QList<QDBusPendingCall> calls;
    for (int i = 0; i < ServicesAdaptor::mostCalls; ++i) {
        calls << begin(servicesInterface(), "TranslatePair1", {QStringLiteral("hello")});
    }
    ASSERT_TRUE(waitUntil([&] { return engine.requests.size() == ServicesAdaptor::mostCalls; }));
    const QDBusMessage refused = translate("TranslatePair1", QStringLiteral("hello"));
    EXPECT_EQ(refused.errorName(), QStringLiteral("org.zelvane.desk.Error.TooManyCalls"));
    // The control goes on meanwhile.
    EXPECT_EQ(call(controlInterface(), "ShowSettings").type(), QDBusMessage::ReplyMessage);

    engine.finishAll(QStringLiteral("Hallo Welt"));
    for (const QDBusPendingCall& pending : calls) {
        EXPECT_TRUE(waitUntil([&] { return pending.isFinished(); }));
        EXPECT_EQ(pending.reply().arguments().value(0), QStringLiteral("Hallo Welt"));
    }
    engine.answer = QStringLiteral("once more");
    EXPECT_TRUE(waitUntil([&] {
        return translate("TranslatePair1", QStringLiteral("hello")).arguments().value(0) ==
               QStringLiteral("once more");
    }));
}

TEST_F(ProgramOnBusTest, aHugeTextIsRefused)
{
    const QString text(ServicesAdaptor::longestText + 1, u'a');
    EXPECT_EQ(translate("TranslatePair1", text).errorName(),
              QStringLiteral("org.zelvane.desk.Error.TextTooLarge"));
    EXPECT_TRUE(engine.requests.isEmpty());
}

TEST_F(ProgramOnBusTest, aCallerWhoGoesAwayDoesNoHarm)
{
    engine.answer.reset();
    QDBusConnection caller = bus.connect();
    QDBusMessage request = QDBusMessage::createMethodCall(
        instanceName({}), busObjectPath(), servicesInterface(), QStringLiteral("TranslatePair1UI"));
    request << QStringLiteral("hello");
    caller.send(request);
    ASSERT_TRUE(waitUntil([&] { return engine.requests.size() == 1; }));
    PrivateBus::disconnect(caller);
    engine.finishAll(QStringLiteral("Hallo Welt"));
    EXPECT_TRUE(waitUntil([&] { return !log.isEmpty(); }));
    engine.answer = QStringLiteral("Hallo Welt");
    EXPECT_EQ(translate("TranslatePair1", QStringLiteral("hello")).type(),
              QDBusMessage::ReplyMessage);
}

TEST_F(ProgramOnBusTest, itsEndAnswersTheCallsUnderWay)
{
    engine.answer.reset();
    const QDBusPendingCall pending =
        begin(servicesInterface(), "TranslatePair1", {QStringLiteral("hello")});
    ASSERT_TRUE(waitUntil([&] { return engine.requests.size() == 1; }));
    program.reset();
    EXPECT_TRUE(waitUntil([&] { return pending.isFinished(); }));
    EXPECT_EQ(pending.reply().type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(call(controlInterface(), "Status").errorName(),
              QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown"));
}

TEST_F(ProgramOnBusTest, aBusThatGoesAwayTakesNothingElseAlong)
{
    engine.answer.reset();
    const QDBusPendingCall pending =
        begin(servicesInterface(), "TranslatePair1UI", {QStringLiteral("hello")});
    ASSERT_TRUE(waitUntil([&] { return engine.requests.size() == 1; }));
    bus.kill();
    EXPECT_TRUE(waitUntil([&] { return pending.isFinished(); }));
    engine.finishAll(QStringLiteral("Hallo Welt"));
    EXPECT_TRUE(waitUntil([&] { return !log.isEmpty(); }));
    model.handleHotKey(pair.id);
    EXPECT_TRUE(model.isBusy());
}

TEST_F(ProgramOnBusTest, aNameThatIsTakenIsToldInASentence)
{
    program.reset();
    ASSERT_TRUE(client.registerService(instanceName({})));
    offer();
    ASSERT_TRUE(program->shortcoming());
    EXPECT_THAT(program->shortcoming()->toStdString(),
                HasSubstr("Another program has taken the name org.zelvane.desk"));
}

TEST_F(ProgramOnBusTest, aMissingBusIsToldInASentence)
{
    const ProgramOnBus alone(noBus(), instanceName({}), {services, control, QString()});
    ASSERT_TRUE(alone.shortcoming());
    EXPECT_THAT(alone.shortcoming()->toStdString(), HasSubstr("There is no session bus"));
}

TEST_F(ProgramOnBusTest, tellsWhatItOffers)
{
    const QDBusMessage reply =
        call(QStringLiteral("org.freedesktop.DBus.Introspectable"), "Introspect");
    const std::string xml = reply.arguments().value(0).toString().toStdString();
    for (const char* part :
         {R"(<interface name="org.zelvane.desk.Services">)", R"(<method name="TranslatePair1">)",
          R"(<method name="TranslatePair2">)", R"(<method name="TranslatePair3">)",
          R"(<method name="TranslatePair1UI">)", R"(<method name="TranslatePair2UI">)",
          R"(<method name="TranslatePair3UI">)", R"(<interface name="org.zelvane.desk.Control">)",
          R"(<method name="Activate")", R"(<method name="TriggerPair">)",
          R"(<arg name="pair" type="s" direction="in"/>)",
          R"(<arg name="text" type="s" direction="in"/>)", R"(<method name="ShowSettings")",
          R"(<method name="ShowTranslationWindow")", R"(<method name="Status">)"}) {
        EXPECT_THAT(xml, HasSubstr(part));
    }
}

TEST_F(ProgramOnBusTest, triggersAPair)
{
    EXPECT_EQ(call(controlInterface(), "TriggerPair", {QStringLiteral("1")}).type(),
              QDBusMessage::ReplyMessage);
    EXPECT_TRUE(model.isBusy());
    const QDBusMessage refused = call(controlInterface(), "TriggerPair", {QStringLiteral("7")});
    EXPECT_EQ(refused.errorName(), QStringLiteral("org.zelvane.desk.Error.NoSuchPair"));
    EXPECT_EQ(refused.errorMessage(), QStringLiteral("Language pair slot 7 is not configured."));
}

TEST_F(ProgramOnBusTest, opensWindowsAndTakesASecondStart)
{
    for (const char* method : {"ShowTranslationWindow", "ShowSettings", "Activate"}) {
        EXPECT_EQ(call(controlInterface(), method).type(), QDBusMessage::ReplyMessage);
    }
    EXPECT_THAT(log, ElementsAre(QStringLiteral("manual window"), QStringLiteral("settings"),
                                 QStringLiteral("reopen")));
}

TEST_F(ProgramOnBusTest, tellsItsStatus)
{
    const QDBusMessage reply = call(controlInterface(), "Status");
    EXPECT_EQ(reply.signature(), QStringLiteral("a{sv}"));
    const auto status = qdbus_cast<QVariantMap>(reply.arguments().value(0));
    EXPECT_EQ(status.value(QStringLiteral("Status")), QStringLiteral("Ready"));
    EXPECT_EQ(status.value(QStringLiteral("Busy")), false);
    EXPECT_EQ(status.value(QStringLiteral("LastError")), QString());
    EXPECT_EQ(status.value(QStringLiteral("Version")), QStringLiteral("1.2.3"));
    EXPECT_THAT(status.value(QStringLiteral("Pairs")).toStringList(),
                ElementsAre(QStringLiteral("Any Language → German")));
    EXPECT_THAT(status.value(QStringLiteral("PairIDs")).toStringList(),
                ElementsAre(pair.id.toString(QUuid::WithoutBraces)));
}

TEST_F(ProgramOnBusTest, whatItDoesNotOfferIsRefused)
{
    EXPECT_EQ(call(servicesInterface(), "TranslatePair4", {QStringLiteral("hello")}).errorName(),
              QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"));
    EXPECT_EQ(call(servicesInterface(), "TranslatePair1", {7}).type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(call(controlInterface(), "TriggerPair").type(), QDBusMessage::ErrorMessage);
}

} // namespace
} // namespace zelvane::test
