// Whatever stands in the file of settings is read, kept and written again without a change.

#include "Survive.h"
#include "settings/DefaultsFormat.h"
#include "settings/LanguagePair.h"
#include "settings/TranslationCatalogue.h"

#include <cstdint>

using zelvane::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (const auto contents = zelvane::decodeDefaults(bytes)) {
        require(zelvane::decodeDefaults(zelvane::encodeDefaults(*contents)) == contents);
    }
    if (const auto pairs = zelvane::decodePairs(bytes)) {
        require(zelvane::decodePairs(zelvane::encodePairs(*pairs)) == pairs);
    }
    static_cast<void>(zelvane::parseCatalogue(bytes));
    return 0;
}
