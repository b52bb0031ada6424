#pragma once

#include <chrono>

namespace zelvane::test {

/// Runs the tests of the program under a watchdog, without silent Qt warnings. GoogleTest must have
/// its arguments and the application object must exist. Yields the exit status.
int runAllTests();

/// Gives the running test a limit of its own instead of the ten seconds of the watchdog, for the
/// few that do many things in a row. Counts from the test's start.
void allowThisTest(std::chrono::seconds limit);

} // namespace zelvane::test
