#pragma once

#include "Services/EngineFixture.h"
#include "Services/RuntimeArchive.h"
#include "Services/SmartEngineInstaller.h"
#include "settings/UserDefaults.h"
#include "support/Await.h"

#include <gmock/gmock.h>

namespace zelvane::test {

/// An installation in progress, as a window would see it.
inline EngineStatus installing(const QString& message, double fraction)
{
    return engine_status::Installing{message, fraction};
}

inline EngineStatus failed(const QString& text)
{
    return engine_status::Failed{text};
}

/// Everything below a folder, by its path relative to it.
inline QStringList filesBelow(const QString& folder)
{
    QStringList found;
    QDirIterator entry(folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                       QDirIterator::Subdirectories);
    while (entry.hasNext()) {
        found += QDir(folder).relativeFilePath(entry.next());
    }
    found.sort();
    return found;
}

} // namespace zelvane::test
