#include "ui/settings/AboutPage.h"

#include "foundation/DescribedError.h"
#include "pipeline/TranslationError.h"
#include "ui/SettingsFixture.h"
#include "ui/components/LinkLabel.h"
#include "ui/licenses/ModelLicenseCatalog.h"
#include "ui/licenses/ModelLicensesSheet.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QDesktopServices>
#include <QTest>

namespace zelvane::test {
namespace {

using ::testing::ElementsAre;

/// Takes the place of the user's browser.
class Browser final : public QObject
{
    Q_OBJECT

public:
    Browser() { QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "open"); }
    ~Browser() override { QDesktopServices::unsetUrlHandler(QStringLiteral("https")); }
    Q_DISABLE_COPY_MOVE(Browser)

    QStringList opened;

public Q_SLOTS:
    void open(const QUrl& address) { opened += address.toString(); }
};

class AboutPageTest : public SettingsTest
{
protected:
    AboutPageTest() { QCoreApplication::setApplicationVersion(QStringLiteral("1.2.3")); }
    ~AboutPageTest() override { QCoreApplication::setApplicationVersion({}); }

    void openPage() { open(SettingsCategory::general); }

    ModelLicensesSheet& openLicenses()
    {
        named<TextButton>(QStringLiteral("Third-Party Licenses…"))->click();
        return *view->findChild<ModelLicensesSheet*>();
    }

    static QCoro::Task<QString> nobodyAnswers()
    {
        throw TranslationError::http(503, QString());
        co_return QString();
    }

    static QCoro::Task<QString> waitedFor(Completion<QString> id)
    {
        const QString answer = co_await id.result();
        co_return answer;
    }

    Browser browser;
};

TEST_F(AboutPageTest, tellsVersionAndBuild)
{
    services.buildNumber = QStringLiteral("45");
    openPage();
    EXPECT_TRUE(shows(QStringLiteral("Version")));
    EXPECT_TRUE(shows(QStringLiteral("1.2.3 (45)")));
    EXPECT_TRUE(shows(QStringLiteral("Install ID")));
}

TEST_F(AboutPageTest, tellsTheVersionAloneWhereNobodyCountsBuilds)
{
    openPage();
    EXPECT_TRUE(shows(QStringLiteral("1.2.3")));
}

TEST_F(AboutPageTest, withoutAnInstallIdThereIsNothingToCopy)
{
    services.installId = [](std::stop_token) { return nobodyAnswers(); };
    openPage();
    auto* copy = named<TextButton>(QStringLiteral("Copy"));
    ASSERT_NE(copy, nullptr);
    EXPECT_FALSE(copy->isEnabled());
}

TEST_F(AboutPageTest, mayGoBeforeTheInstallIdComes)
{
    const Completion<QString> id;
    services.installId = [id](std::stop_token) { return waitedFor(id); };
    openPage();
    openLicenses();
    view.reset();
    id.succeed(QStringLiteral("late"));
    EXPECT_TRUE(id.isDecided());
}

TEST_F(AboutPageTest, itsLinksOpenInTheBrowser)
{
    openPage();
    for (const QString& label : {QStringLiteral("Website"), QStringLiteral("Privacy Policy"),
                                 QStringLiteral("Terms of Service")}) {
        auto* link = named<LinkLabel>(label);
        ASSERT_NE(link, nullptr) << qPrintable(label);
        EXPECT_TRUE(link->address().isValid());
        EXPECT_EQ(link->address().scheme(), QStringLiteral("https"));
        QTest::mouseClick(link, Qt::LeftButton);
    }
    ASSERT_EQ(browser.opened.size(), 3);
    EXPECT_EQ(browser.opened.removeDuplicates(), 0);
}

TEST_F(AboutPageTest, theLicencesNameEachPartWithItsTwoLinks)
{
    openPage();
    ModelLicensesSheet& sheet = openLicenses();
    EXPECT_TRUE(shows(QStringLiteral("Third-Party Licenses")));
    QStringList expected;
    for (const ModelLicenseCatalog::Entry& entry : ModelLicenseCatalog::entries()) {
        EXPECT_TRUE(shows(entry.name));
        EXPECT_TRUE(shows(entry.copyright));
        expected << entry.licenseName + u' ' + entry.licenseURL.toString()
                 << QStringLiteral("Source link ") + entry.sourceURL.toString();
    }
    QStringList links;
    for (auto* link : sheet.findChildren<LinkLabel*>()) {
        link->click();
        links << link->text() + u' ' + browser.opened.last();
    }
    EXPECT_EQ(links, expected);
    EXPECT_EQ(links.size(), 10);
}

TEST_F(AboutPageTest, theLicencesCloseWithReturnAndEscape)
{
    openPage();
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
        ModelLicensesSheet& sheet = openLicenses();
        QTest::keyClick(&sheet, key);
        EXPECT_TRUE(sheet.isHidden());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    ModelLicensesSheet& sheet = openLicenses();
    named<TextButton>(QStringLiteral("Done"))->click();
    EXPECT_TRUE(sheet.isHidden());
}

} // namespace
} // namespace zelvane::test

#include "AboutPageTest.moc"
