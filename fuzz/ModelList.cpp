// Whatever a provider lists ends in models with identifiers, in order, or in a failure that has a
// text.

#include "Survive.h"
#include "online/RemoteModels.h"

#include <algorithm>
#include <cstdint>

using namespace zelvane;
using zelvane::fuzz::require;
using zelvane::fuzz::survive;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    for (const AIProvider provider : {AIProvider::chatGPT, AIProvider::deepSeek,
                                      AIProvider::mistral, AIProvider::grok, AIProvider::gemini}) {
        survive([&] {
            require(std::ranges::is_sorted(listedModels(provider, body), {}, &RemoteModel::apiID));
        });
    }
    survive([&] { static_cast<void>(listedModels(AIProvider::claude, body)); });
    return 0;
}
