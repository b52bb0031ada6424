#include "desktop/AbsentDesktop.h"

namespace zelvane {

QCoro::Task<PasteboardSnapshot> AbsentPasteboard::snapshot()
{
    throw PasteboardError();
    co_return {};
}

QCoro::Task<std::optional<QString>> AbsentPasteboard::string()
{
    co_return std::nullopt;
}

QCoro::Task<PostResult> AbsentKeystrokes::postCommandKey(CommandKey)
{
    co_return PostResult::targetGone;
}

bool AbsentHotKeys::installHandler(std::function<void(HotKeyID)>)
{
    return true;
}

std::optional<HotKeyRegistrar::Reference> AbsentHotKeys::registerHotKey(const KeyChord&, HotKeyID)
{
    return std::nullopt;
}

} // namespace zelvane
