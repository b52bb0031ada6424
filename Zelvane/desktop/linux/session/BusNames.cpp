#include "desktop/linux/session/BusNames.h"

#include "settings/FileSystemLocations.h"

#include <QCryptographicHash>

#include <filesystem>

namespace zelvane {

namespace {

/// The same for all ways to write the folder, whether it exists or not.
QByteArray canonical(const QString& folder)
{
    std::error_code failed;
    const std::filesystem::path path(folder.toStdString());
    const auto resolved = std::filesystem::weakly_canonical(path, failed);
    QByteArray name = QByteArray::fromStdString((failed ? path : resolved).string());
    while (name.size() > 1 && name.endsWith('/')) {
        name.chop(1);
    }
    return name;
}

} // namespace

QString instanceName(const QString& profile)
{
    if (profile.isEmpty()) {
        return bundleIdentifier();
    }
    constexpr qsizetype digits = 16;
    const QByteArray hash =
        QCryptographicHash::hash(canonical(profile), QCryptographicHash::Sha256).toHex();
    return bundleIdentifier() + QStringLiteral(".Profile_") +
           QString::fromLatin1(hash.first(digits));
}

QString busObjectPath()
{
    return QStringLiteral("/org/zelvane/desk");
}

QString servicesInterface()
{
    return QStringLiteral("org.zelvane.desk.Services");
}

QString controlInterface()
{
    return QStringLiteral("org.zelvane.desk.Control");
}

namespace busError {

QString prefix()
{
    return QStringLiteral("org.zelvane.desk.Error.");
}

QString failed()
{
    return prefix() + QStringLiteral("Failed");
}

QString noSuchPair()
{
    return prefix() + QStringLiteral("NoSuchPair");
}

QString textTooLarge()
{
    return prefix() + QStringLiteral("TextTooLarge");
}

QString tooManyCalls()
{
    return prefix() + QStringLiteral("TooManyCalls");
}

} // namespace busError

} // namespace zelvane
