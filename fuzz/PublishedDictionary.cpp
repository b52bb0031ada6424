// Whatever is downloaded as a dictionary becomes lines that can be read again, or nothing at all.

#include "Survive.h"
#include "glossary/DictionaryConversion.h"
#include "glossary/GlossaryDictionary.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <optional>

using namespace zelvane;
using zelvane::fuzz::require;

namespace {

void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

/// None if there is no such file.
std::optional<QByteArray> contentsOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? std::optional(file.readAll()) : std::nullopt;
}

QStringList namesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QTemporaryDir folder;
    static const QString database = folder.filePath(QStringLiteral("published.sqlite3"));
    static const QString tsv = folder.filePath(QStringLiteral("de-en.tsv"));
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    write(database, bytes);
    QFile::remove(tsv);

    bool isDone = false;
    fuzz::survive([&] {
        convertDictionary(database, tsv, {});
        isDone = true;
    });

    require(contentsOf(database) == bytes);
    const auto lines = contentsOf(tsv);
    require(lines.has_value() == isDone);
    require(namesIn(folder.path()).size() == (isDone ? 2 : 1));
    if (lines) {
        require(lines->endsWith('\n') && lines->count('\t') == 2 * lines->count('\n'));
        require(lines->isValidUtf8() && !lines->contains('\0'));
        const GlossaryDictionary readable(*lines);
    }
    return 0;
}
