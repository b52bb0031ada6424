#pragma once

#include <QProcessEnvironment>
#include <QString>

namespace zelvane {

/// The name under which the desktop knows the program, and of its folders.
[[nodiscard]] QString bundleIdentifier();

/// Where the program keeps what it stores. Callable from any thread; the folders may not exist yet.
class FileSystemLocations
{
public:
    FileSystemLocations() = default;
    virtual ~FileSystemLocations() = default;
    Q_DISABLE_COPY_MOVE(FileSystemLocations)

    /// For the plain settings.
    [[nodiscard]] virtual QString configDirectory() const = 0;

    /// For engines, models and dictionaries.
    [[nodiscard]] virtual QString applicationSupportDirectory() const = 0;
};

/// The folders of the XDG base directory specification.
class XdgLocations final : public FileSystemLocations
{
public:
    /// Moves the application-support folder of older versions to its present name.
    explicit XdgLocations(
        const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());

    [[nodiscard]] QString configDirectory() const override { return m_config; }
    [[nodiscard]] QString applicationSupportDirectory() const override { return m_support; }

private:
    QString m_config;
    QString m_support;
};

/// Everything under one folder, apart from what the user has otherwise.
class ProfileLocations final : public FileSystemLocations
{
public:
    /// `directory` is taken relative to the working directory of this moment.
    explicit ProfileLocations(const QString& directory);

    [[nodiscard]] QString configDirectory() const override { return m_config; }
    [[nodiscard]] QString applicationSupportDirectory() const override { return m_support; }

private:
    QString m_config;
    QString m_support;
};

} // namespace zelvane
