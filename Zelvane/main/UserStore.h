#pragma once

#include "settings/FileSystemLocations.h"
#include "settings/FileUserDefaults.h"

#include <QString>

#include <functional>
#include <memory>

namespace zelvane {

/// The folders of the user, or of a profile; empty means the user's own.
[[nodiscard]] std::unique_ptr<FileSystemLocations> locationsOf(const QString& profile);

/// The stored settings of the user, or of a profile.
///
/// What goes wrong with them is told on standard error, in one line behind the program's name.
class UserStore
{
public:
    explicit UserStore(const QString& profile);

    [[nodiscard]] FileUserDefaults& defaults() { return m_defaults; }
    [[nodiscard]] const FileSystemLocations& locations() const { return *m_locations; }
    /// The folder for engines, models and dictionaries.
    [[nodiscard]] QString applicationSupport() const
    {
        return m_locations->applicationSupportDirectory();
    }

private:
    std::unique_ptr<FileSystemLocations> m_locations;
    FileUserDefaults m_defaults;
};

/// The value of ZELVANE_API_KEY, which is then removed, so that no child process inherits it.
[[nodiscard]] QString takeKeyFromEnvironment();

/// One line on standard error, behind the program's name.
void complain(const QString& sentence);

} // namespace zelvane
