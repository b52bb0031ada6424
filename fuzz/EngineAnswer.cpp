// Whatever a provider with a protocol of its own answers ends in a trimmed translation or in a
// failure that has a text; Claude's is never empty.

#include "Survive.h"
#include "foundation/Text.h"
#include "online/AnthropicClient.h"
#include "online/DeepLClient.h"
#include "online/GeminiClient.h"

#include <cstdint>

using namespace zelvane;
using zelvane::fuzz::require;
using zelvane::fuzz::survive;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto isTrimmed = [](const QString& translation) {
        return text::trimmed(translation) == translation;
    };
    survive([&] { require(isTrimmed(geminiResponseText(body))); });
    survive([&] { require(isTrimmed(deepLResponseText(body))); });
    survive([&] {
        const QString translation = claudeResponseText(body);
        require(isTrimmed(translation) && !translation.isEmpty());
    });
    return 0;
}
