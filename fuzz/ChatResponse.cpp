// Whatever a provider answers ends in a translation or in a failure that has a text.

#include "online/ChatCompletionsClient.h"

#include <cstdint>
#include <cstdlib>

namespace {

void require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

template <typename Call>
void survive(const Call& call)
{
    try {
        call();
    } catch (const zelvane::DescribedError& failure) {
        require(!failure.description().isEmpty());
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    survive([&] { static_cast<void>(zelvane::chatResponseText(body)); });
    survive([&] { zelvane::validateHTTPResponse(400, body); });
    return 0;
}
