#include "foundation/EndDeadline.h"

#include <atomic>
#include <csignal>

#include <sys/time.h>
#include <unistd.h>

namespace zelvane {

namespace {

std::atomic_flag begun;

void endNow(int)
{
    ::_exit(1);
}

void startTimer(std::chrono::milliseconds delay)
{
    itimerval timer{};
    timer.it_value.tv_sec = delay.count() / 1000;
    timer.it_value.tv_usec = suseconds_t(delay.count() % 1000 * 1000);
    ::setitimer(ITIMER_REAL, &timer, nullptr);
}

} // namespace

void beginEndDeadline()
{
    if (!begun.test_and_set()) {
        std::signal(SIGALRM, endNow);
        startTimer(endLimit);
    }
}

void cancelEndDeadline()
{
    startTimer({});
    std::signal(SIGALRM, SIG_DFL);
    begun.clear();
}

} // namespace zelvane
