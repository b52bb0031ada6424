// Whatever message a local server sends ends in a text that isn't blank, or in none.

#include "Services/ModelOutput.h"
#include "Survive.h"
#include "foundation/Text.h"

#include <QJsonDocument>

#include <cstdint>

using namespace zelvane;
using zelvane::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto text = extractMessageText(QJsonDocument::fromJson(body).object());
    require(!text || !text::isBlank(*text));
    return 0;
}
