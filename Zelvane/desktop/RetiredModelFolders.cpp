#include "desktop/RetiredModelFolders.h"

#include <QFile>

#include <filesystem>

namespace zelvane {

QStringList retiredModelFolders()
{
    return {QStringLiteral("qwen-lite"),     QStringLiteral("qwen"),
            QStringLiteral("lmt60-17b"),     QStringLiteral("eurollm-17b"),
            QStringLiteral("hymt2-18b"),     QStringLiteral("marco-mt-14b"),
            QStringLiteral("madlad-400-3b"), QStringLiteral("madlad-7b"),
            QStringLiteral("nllb")};
}

void deleteRetiredModelFolders(const QString& applicationSupport)
{
    const std::filesystem::path support(QFile::encodeName(applicationSupport).toStdString());
    for (const QString& name : retiredModelFolders()) {
        // Unlike Qt's, this one follows no symbolic link out of the folder.
        std::error_code ignored;
        std::filesystem::remove_all(support / name.toStdString(), ignored);
    }
}

} // namespace zelvane
