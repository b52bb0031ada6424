#pragma once

namespace zelvane {

/// Lets all other work go before that of the calling thread, for the rest of its life: for long
/// work that nobody waits for.
void becomeUtilityThread();

} // namespace zelvane
