#include "main/UserStore.h"

#include <QByteArray>

#include <cstdio>

namespace zelvane {

std::unique_ptr<FileSystemLocations> locationsOf(const QString& profile)
{
    if (profile.isEmpty()) {
        return std::make_unique<XdgLocations>();
    }
    return std::make_unique<ProfileLocations>(profile);
}

UserStore::UserStore(const QString& profile)
    : m_locations(locationsOf(profile))
    , m_defaults(m_locations->configDirectory(),
                 [](const DefaultsNotice& notice) { complain(notice.description()); })
{
}

QString takeKeyFromEnvironment()
{
    const QString key = QString::fromUtf8(qgetenv("ZELVANE_API_KEY"));
    qunsetenv("ZELVANE_API_KEY");
    return key;
}

void complain(const QString& sentence)
{
    std::fputs(("zelvane-desk: " + sentence.toUtf8() + '\n').constData(), stderr);
}

} // namespace zelvane
