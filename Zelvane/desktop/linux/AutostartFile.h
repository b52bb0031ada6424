#pragma once

#include "desktop/LoginItem.h"
#include "settings/DurableFile.h"

#include <QString>
#include <QStringList>

#include <expected>

namespace zelvane {

/// The file by which the desktop starts the program with the session, in the user's autostart
/// folder. Blocks; any thread, one call at a time.
class AutostartFile
{
public:
    /// `command` is the program's file and its arguments. A file that has gone is no command.
    AutostartFile(const QString& folder, const QStringList& command);

    [[nodiscard]] QString path() const { return m_path; }

    [[nodiscard]] LoginItem::State state() const;

    /// Has the file start this program if the one that it names is no longer there: the user has
    /// moved it.
    [[nodiscard]] std::expected<void, FileFailure> repair() const;

    [[nodiscard]] std::expected<void, FileFailure> turnOn() const;
    /// A file that the user has edited stays, switched off; any other one is deleted.
    [[nodiscard]] std::expected<void, FileFailure> turnOff() const;

private:
    /// What this program writes.
    [[nodiscard]] QByteArray ownContent() const;
    [[nodiscard]] std::expected<std::optional<QByteArray>, FileFailure> content() const;

    QString m_folder;
    QString m_path;
    QStringList m_command;
};

} // namespace zelvane
