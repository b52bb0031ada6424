// What the adapters read from a session bus, against services that the tests put there.

#include "support/Await.h"
#include "support/DesktopSession.h"
#include "ui/linux/FontDescription.h"
#include "ui/linux/LinuxAppearance.h"
#include "ui/linux/TrayWatcher.h"

#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusVariant>

namespace zelvane::test {
namespace {

/// The desktop's settings portal, as far as it reads settings and announces changes.
class FakePortal final : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    FakePortal() { qRegisterMetaType<QDBusVariant>(); }

    std::map<std::pair<QString, QString>, QVariant> settings;

public Q_SLOTS:
    QDBusVariant Read(const QString& group, const QString& key)
    {
        const auto found = settings.find({group, key});
        if (found == settings.end()) {
            sendErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"),
                           QStringLiteral("Requested setting not found"));
            return {};
        }
        return QDBusVariant(QVariant::fromValue(QDBusVariant(found->second)));
    }

Q_SIGNALS:
    void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);
};

const QString trayService = QStringLiteral("org.kde.StatusNotifierWatcher");

/// The service that knows the panel in which tray icons show.
class FakeTrayService final : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)

public:
    explicit FakeTrayService(QDBusConnection bus)
    {
        bus.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                           QDBusConnection::ExportAllContents);
    }

    [[nodiscard]] bool hasHost() const { return m_hasHost; }
    void setHasHost(bool has)
    {
        m_hasHost = has;
        has ? Q_EMIT StatusNotifierHostRegistered() : Q_EMIT StatusNotifierHostUnregistered();
    }

Q_SIGNALS:
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();

private:
    bool m_hasHost = false;
};

QString appearanceGroup()
{
    return QStringLiteral("org.freedesktop.appearance");
}

class SessionBusTest : public ::testing::Test
{
protected:
    SessionBusTest()
        : m_bus(QDBusConnection::connectToBus(m_session.sessionBusAddress(),
                                              QStringLiteral("services")))
        , m_clientBus(QDBusConnection::connectToBus(m_session.sessionBusAddress(),
                                                    QStringLiteral("program")))
    {
    }
    ~SessionBusTest() override
    {
        QDBusConnection::disconnectFromBus(QStringLiteral("services"));
        QDBusConnection::disconnectFromBus(QStringLiteral("program"));
    }

    void startPortal()
    {
        ASSERT_TRUE(m_bus.registerObject(
            QStringLiteral("/org/freedesktop/portal/desktop"), &m_portal,
            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
        ASSERT_TRUE(m_bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
    }

    void set(const char* key, const QVariant& value)
    {
        m_portal.settings[{appearanceGroup(), QLatin1String(key)}] = value;
    }

    /// Changes a setting as the user does in the desktop's own dialog.
    void change(const QString& group, const char* key, const QVariant& value)
    {
        m_portal.settings[{group, QLatin1String(key)}] = value;
        Q_EMIT m_portal.SettingChanged(group, QLatin1String(key), QDBusVariant(value));
    }

    DesktopSession m_session{{.windowManager = false, .sessionBus = true}};
    QDBusConnection m_bus;
    QDBusConnection m_clientBus;
    FakePortal m_portal;
    DesktopAppearance m_appearance;
};

TEST_F(SessionBusTest, takesColoursAndContrastFromThePortal)
{
    set("color-scheme", 1U);
    set("contrast", 1U);
    QDBusArgument accent;
    accent.beginStructure();
    accent << 1.0 << 0.5 << 0.0;
    accent.endStructure();
    set("accent-color", QVariant::fromValue(accent));
    startPortal();
    const LinuxAppearance adapter(m_appearance, m_clientBus);
    EXPECT_TRUE(waitUntil([&] {
        return m_appearance.colorScheme() == ColorScheme::dark && m_appearance.highContrast() &&
               m_appearance.accent().has_value();
    }));
    EXPECT_EQ(m_appearance.accent()->rgb(), QColor(255, 128, 0).rgb());
}

TEST_F(SessionBusTest, followsAChangeAtOnce)
{
    set("color-scheme", 2U);
    startPortal();
    const LinuxAppearance adapter(m_appearance, m_clientBus);
    change(appearanceGroup(), "color-scheme", 1U);
    EXPECT_TRUE(waitUntil([&] { return m_appearance.colorScheme() == ColorScheme::dark; }));
    change(QStringLiteral("org.gnome.desktop.interface"), "enable-animations", false);
    EXPECT_TRUE(waitUntil([&] { return m_appearance.reducedMotion(); }));
    change(appearanceGroup(), "color-scheme", 0U);
    EXPECT_TRUE(waitUntil([&] { return m_appearance.colorScheme() == ColorScheme::light; }));
}

TEST_F(SessionBusTest, anAccentOutsideTheRangeMeansNone)
{
    QDBusArgument accent;
    accent.beginStructure();
    accent << -1.0 << 0.5 << 0.0;
    accent.endStructure();
    set("accent-color", QVariant::fromValue(accent));
    set("contrast", 1U);
    startPortal();
    const LinuxAppearance adapter(m_appearance, m_clientBus);
    ASSERT_TRUE(waitUntil([&] { return m_appearance.highContrast(); }));
    EXPECT_EQ(m_appearance.accent(), std::nullopt);
}

TEST_F(SessionBusTest, worksWithoutAPortalAndWithoutABus)
{
    const LinuxAppearance adapter(m_appearance, m_clientBus);
    DesktopAppearance other;
    const LinuxAppearance alone(other, QDBusConnection(QStringLiteral("no such bus")));
    EXPECT_EQ(other.colorScheme(), ColorScheme::light);
    const TrayWatcher tray(QDBusConnection(QStringLiteral("no such bus")));
    EXPECT_FALSE(tray.available());
}

TEST_F(SessionBusTest, seesATrayThatIsThereAndOneThatComesLate)
{
    FakeTrayService tray(m_bus);
    tray.setHasHost(true);
    const TrayWatcher early(m_clientBus);
    EXPECT_FALSE(early.available());
    ASSERT_TRUE(m_bus.registerService(trayService));
    EXPECT_TRUE(waitUntil([&] { return early.available(); }));
    const TrayWatcher late(m_clientBus);
    EXPECT_TRUE(waitUntil([&] { return late.available(); }));
    ASSERT_TRUE(m_bus.unregisterService(trayService));
    EXPECT_TRUE(waitUntil([&] { return !early.available() && !late.available(); }));
}

TEST_F(SessionBusTest, aTrayServiceWithoutAPanelIsNoTrayYet)
{
    FakeTrayService tray(m_bus);
    ASSERT_TRUE(m_bus.registerService(trayService));
    const TrayWatcher watcher(m_clientBus);
    waitUntil([] { return false; }, std::chrono::milliseconds(200));
    EXPECT_FALSE(watcher.available());
    tray.setHasHost(true);
    EXPECT_TRUE(waitUntil([&] { return watcher.available(); }));
    tray.setHasHost(false);
    EXPECT_TRUE(waitUntil([&] { return !watcher.available(); }));
}

TEST_F(SessionBusTest, takesTheFontWhereQtMayNotKnowIt)
{
    qputenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
    m_portal
        .settings[{QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("font-name")}] =
        QStringLiteral("Noto Sans 11");
    startPortal();
    const LinuxAppearance adapter(m_appearance, m_clientBus);
    qunsetenv("XDG_CURRENT_DESKTOP");
    ASSERT_TRUE(waitUntil([&] { return m_appearance.systemFont().has_value(); }));
    EXPECT_EQ(m_appearance.systemFont()->pointSizeF(), 11);
    change(QStringLiteral("org.gnome.desktop.interface"), "text-scaling-factor", 1.5);
    EXPECT_TRUE(waitUntil([&] { return m_appearance.systemFont()->pointSizeF() == 16.5; }));
}

struct DescriptionCase
{
    const char* description;
    const char* families;
    double points;
    int weight;
    bool italic;
};

class FontDescriptions : public ::testing::TestWithParam<DescriptionCase>
{
};

TEST_P(FontDescriptions, readsFamilyStyleAndSize)
{
    const auto font = fontFromDescription(QLatin1String(GetParam().description));
    ASSERT_TRUE(font.has_value());
    EXPECT_EQ(font->families().join(u'|').toStdString(), GetParam().families);
    EXPECT_EQ(font->pointSizeF(), GetParam().points);
    EXPECT_EQ(int(font->weight()), GetParam().weight);
    EXPECT_EQ(font->italic(), GetParam().italic);
}

INSTANTIATE_TEST_SUITE_P(All, FontDescriptions,
                         ::testing::Values(DescriptionCase{"Cantarell 11", "Cantarell", 11, 400,
                                                           false},
                                           DescriptionCase{"Noto Sans Semi-Bold Italic 10.5",
                                                           "Noto Sans", 10.5, 600, true},
                                           DescriptionCase{"Ubuntu Sans, Noto Sans Medium 12",
                                                           "Ubuntu Sans|Noto Sans", 12, 500, false},
                                           DescriptionCase{"Bold 9", "Bold", 9, 400, false}));

TEST(FontFromDescription, hasNoneWithoutAFamilyOrASensibleSize)
{
    for (const char* description : {"", "11", "Cantarell", "Cantarell x", "Cantarell -3",
                                    "Cantarell nan", "Cantarell 100000"}) {
        EXPECT_EQ(fontFromDescription(QLatin1String(description)), std::nullopt) << description;
    }
}

TEST(KeepsFontInDescription, knowsTheDesktopsOfTheFamily)
{
    EXPECT_TRUE(keepsFontInDescription(QStringLiteral("ubuntu:GNOME")));
    EXPECT_TRUE(keepsFontInDescription(QStringLiteral("X-Cinnamon")));
    EXPECT_FALSE(keepsFontInDescription(QStringLiteral("KDE")));
    EXPECT_FALSE(keepsFontInDescription(QString()));
}

TEST(ColorSchemeFromPortal, knowsThreeNumbers)
{
    EXPECT_EQ(colorSchemeFromPortal(1, ColorScheme::light), ColorScheme::dark);
    EXPECT_EQ(colorSchemeFromPortal(2, ColorScheme::dark), ColorScheme::light);
    EXPECT_EQ(colorSchemeFromPortal(0, ColorScheme::dark), ColorScheme::dark);
    EXPECT_EQ(colorSchemeFromPortal(7, ColorScheme::light), ColorScheme::light);
}

} // namespace
} // namespace zelvane::test

#include "SessionBusTest.moc"
