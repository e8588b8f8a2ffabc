#pragma once

#if defined(__linux__)
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>
#elif defined(__APPLE__)
#include <pthread/qos.h>
#endif

// Work handed off the main thread (parsing, indexing, transfers, freeing) runs below it: on a
// machine with two cores, a load's several workers would otherwise take the main thread's core
// for a scheduler slice at a time, and the window would stall for tens of milliseconds while its
// own work waited. Below, not idle: the workers still get every core the window leaves free.
class BackgroundPriority
{
public:
    BackgroundPriority() = delete;

    // Lowers the calling thread once; later calls on the same thread do nothing.
    static void lowerCurrentThread()
    {
        static thread_local bool lowered = false;
        if (lowered)
            return;
        lowered = true;
#if defined(__linux__)
        // A batch thread never preempts the thread that wakes it: handing work to the pool does
        // not cost the main thread the rest of its slice.
        const sched_param parameters{};
        pthread_setschedparam(pthread_self(), SCHED_BATCH, &parameters);
        // Linux keeps a nice value per thread: 5 gives a third of the main thread's share of a
        // contended core.
        setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), niceness);
#elif defined(__APPLE__)
        pthread_set_qos_class_self_np(QOS_CLASS_UTILITY, 0);
#endif
    }

private:
    static constexpr int niceness = 5;
};
