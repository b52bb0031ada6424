// Whatever claims to be a document is none, or is written in such a way that it is read as the same
// one again.

#include "Services/StructuredDocument.h"
#include "Survive.h"

#include <cstdint>

using namespace zelvane;
using zelvane::fuzz::require;
using Layout = StructuredDocument::Layout;

namespace {

void checkDocument(const StructuredDocument& document)
{
    const QString compact = document.written(Layout::compact);
    const auto again = StructuredDocument::parse(document.written(Layout::indented));
    require(again && again->strings() == document.strings() &&
            again->written(Layout::compact) == compact);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    auto document = StructuredDocument::parse(QString::fromUtf8(bytes));
    if (!document) {
        return 0;
    }
    checkDocument(*document);
    QHash<QString, QString> replacements;
    for (const DocumentString& string : document->strings()) {
        replacements.insert(string.path, string.path + string.value);
    }
    document->replaceStrings(replacements);
    checkDocument(*document);
    return 0;
}
