#include "desktop/linux/AutostartFile.h"

#include "desktop/linux/DesktopEntry.h"
#include "settings/FileSystemLocations.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace zelvane {

namespace {

constexpr qint64 largestEntry = 256 * 1024;

const QString execKey = QStringLiteral("Exec");
const QString hiddenKey = QStringLiteral("Hidden");
/// GNOME's way to switch an entry off.
const QString enabledKey = QStringLiteral("X-GNOME-Autostart-enabled");

bool isSwitchedOff(const DesktopEntry& entry)
{
    return entry.value(hiddenKey) == QStringLiteral("true") ||
           entry.value(enabledKey) == QStringLiteral("false");
}

/// Whether the program of an entry can be started, by a path or by a name that is looked for.
bool isThere(const QString& program)
{
    return !program.isEmpty() && !QStandardPaths::findExecutable(program).isEmpty();
}

FileFailure notRemoved(const QString& path, const QFile& file)
{
    return {path, file.errorString()};
}

} // namespace

AutostartFile::AutostartFile(const QString& folder, const QStringList& command)
    : m_folder(folder)
    , m_path(folder + u'/' + bundleIdentifier() + QStringLiteral(".desktop"))
    , m_command(command)
{
}

QByteArray AutostartFile::ownContent() const
{
    DesktopEntry entry = DesktopEntry::parse({});
    entry.setValue(QStringLiteral("Type"), QStringLiteral("Application"));
    entry.setValue(QStringLiteral("Name"), QStringLiteral("Zelvane Desk"));
    entry.setValue(execKey, execValue(m_command));
    entry.setValue(QStringLiteral("Icon"), bundleIdentifier());
    entry.setValue(QStringLiteral("Terminal"), QStringLiteral("false"));
    entry.setValue(enabledKey, QStringLiteral("true"));
    return entry.toBytes();
}

std::expected<std::optional<QByteArray>, FileFailure> AutostartFile::content() const
{
    return readFile(m_path, largestEntry);
}

LoginItem::State AutostartFile::state() const
{
    const auto bytes = content();
    if (!bytes || !*bytes) {
        return LoginItem::State::absent;
    }
    return isSwitchedOff(DesktopEntry::parse(**bytes)) ? LoginItem::State::off
                                                       : LoginItem::State::on;
}

std::expected<void, FileFailure> AutostartFile::repair() const
{
    const auto bytes = content();
    if (!bytes || !*bytes) {
        return {};
    }
    DesktopEntry entry = DesktopEntry::parse(**bytes);
    if (isThere(programOfExec(entry.value(execKey).value_or(QString())))) {
        return {};
    }
    entry.setValue(execKey, execValue(m_command));
    entry.remove(QStringLiteral("TryExec"));
    return replaceDurably(m_path, entry.toBytes());
}

std::expected<void, FileFailure> AutostartFile::turnOn() const
{
    if (QFileInfo(m_path).isSymLink()) {
        QFile::remove(m_path); // what it leads to belongs to others
    }
    const auto bytes = content();
    if (!bytes) {
        return std::unexpected(bytes.error());
    }
    if (!*bytes) {
        if (auto made = makePrivateDirectory(m_folder); !made) {
            return made;
        }
        return replaceDurably(m_path, ownContent());
    }
    DesktopEntry entry = DesktopEntry::parse(**bytes);
    entry.remove(hiddenKey);
    entry.setValue(enabledKey, QStringLiteral("true"));
    if (!isThere(programOfExec(entry.value(execKey).value_or(QString())))) {
        entry.setValue(execKey, execValue(m_command));
    }
    return replaceDurably(m_path, entry.toBytes());
}

std::expected<void, FileFailure> AutostartFile::turnOff() const
{
    const auto bytes = content();
    if (!bytes) {
        return std::unexpected(bytes.error());
    }
    if (!*bytes) {
        return {};
    }
    DesktopEntry entry = DesktopEntry::parse(**bytes);
    DesktopEntry own = DesktopEntry::parse(ownContent());
    own.setValue(execKey, entry.value(execKey).value_or(QString())); // of another place
    if (entry == own || QFileInfo(m_path).isSymLink()) {
        QFile file(m_path);
        return file.remove() ? std::expected<void, FileFailure>()
                             : std::unexpected(notRemoved(m_path, file));
    }
    entry.setValue(hiddenKey, QStringLiteral("true"));
    return replaceDurably(m_path, entry.toBytes());
}

} // namespace zelvane
