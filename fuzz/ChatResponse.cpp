// Whatever a provider answers ends in a translation or in a failure that has a text.

#include "Survive.h"
#include "online/ChatCompletionsClient.h"

#include <cstdint>

using zelvane::fuzz::survive;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    survive([&] { static_cast<void>(zelvane::chatResponseText(body)); });
    survive([&] { zelvane::validateHTTPResponse(400, body); });
    return 0;
}
