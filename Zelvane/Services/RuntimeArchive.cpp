#include "Services/RuntimeArchive.h"

#include "Services/EngineError.h"
#include "Services/EngineRecord.h"
#include "settings/Localization.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace zelvane {

QString runtimeArchiveName()
{
#if defined(Q_PROCESSOR_ARM_64)
    const QString processor = QStringLiteral("arm64");
#else
    const QString processor = QStringLiteral("x64");
#endif
    return llamaBuild() + QStringLiteral("-bin-linux-") + processor + QStringLiteral(".tar.gz");
}

QStringList runtimeArchiveFolders()
{
    const QString prefix = QCoreApplication::applicationDirPath() + QStringLiteral("/..");
    return {QDir::cleanPath(prefix + QStringLiteral("/share/zelvane-desk/llama")),
            QStringLiteral(ZELVANE_SOURCE_RESOURCES "/llama")};
}

QString findRuntimeArchive(const QStringList& folders)
{
    for (const QString& folder : folders) {
        const QString path = folder + u'/' + runtimeArchiveName();
        if (QFileInfo(path).isFile()) {
            return path;
        }
    }
    throw EngineError(EngineError::archiveMissing,
                      LOCALIZATION_KEY("Bundled llama.cpp was not found in the app."));
}

} // namespace zelvane
