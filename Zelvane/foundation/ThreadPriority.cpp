#include "foundation/ThreadPriority.h"

#ifdef __APPLE__
#include <pthread/qos.h>
#else
#include <sys/resource.h>
#endif

namespace zelvane {

void becomeUtilityThread()
{
#ifdef __APPLE__
    pthread_set_qos_class_self_np(QOS_CLASS_UTILITY, 0);
#else
    // On Linux a nice value belongs to a thread, and 0 stands for the calling one.
    constexpr int nice = 10;
    ::setpriority(PRIO_PROCESS, 0, nice);
#endif
}

} // namespace zelvane
