#include "settings/FileSystemLocations.h"

#include <QDir>
#include <QFileInfo>

namespace zelvane {

namespace {

QString ownFolder(const QString& base)
{
    return base + u'/' + bundleIdentifier();
}

/// The folder that a variable names, or the usual one in the home folder. Relative paths don't
/// count, and who has no home folder gets the temporary one.
QString baseDirectory(const QProcessEnvironment& environment, const QString& variable,
                      const QString& usual)
{
    const QString named = environment.value(variable);
    if (QDir::isAbsolutePath(named)) {
        return QDir::cleanPath(named);
    }
    const QString home = environment.value(QStringLiteral("HOME"));
    if (QDir::isAbsolutePath(home)) {
        return QDir::cleanPath(home + u'/' + usual);
    }
    return QDir::tempPath();
}

/// A failed move is nobody's fault and leaves the program to begin anew.
void moveEarlierFolder(const QString& folder)
{
    const QString earlier = QFileInfo(folder).path() + QStringLiteral("/org.zelvane.legacy");
    if (QFileInfo::exists(earlier) && !QFileInfo::exists(folder)) {
        QDir().rename(earlier, folder);
    }
}

} // namespace

QString bundleIdentifier()
{
    return QStringLiteral("org.zelvane.desk");
}

XdgLocations::XdgLocations(const QProcessEnvironment& environment)
    : m_config(ownFolder(
          baseDirectory(environment, QStringLiteral("XDG_CONFIG_HOME"), QStringLiteral(".config"))))
    , m_support(ownFolder(baseDirectory(environment, QStringLiteral("XDG_DATA_HOME"),
                                        QStringLiteral(".local/share"))))
{
    moveEarlierFolder(m_support);
}

ProfileLocations::ProfileLocations(const QString& directory)
    : m_config(ownFolder(QDir::cleanPath(QDir().absoluteFilePath(directory)) +
                         QStringLiteral("/config")))
    , m_support(
          ownFolder(QDir::cleanPath(QDir().absoluteFilePath(directory)) + QStringLiteral("/data")))
{
    moveEarlierFolder(m_support);
}

} // namespace zelvane
