#pragma once

namespace zelvane::test {

/// Runs the tests of the program under a watchdog, without silent Qt warnings. GoogleTest must have
/// its arguments and the application object must exist. Yields the exit status.
int runAllTests();

} // namespace zelvane::test
