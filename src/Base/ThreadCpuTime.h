#pragma once

#include <time.h>

// CPU milliseconds the calling thread has used so far: the cost of work on one thread, whatever
// else the machine runs meanwhile.
inline double threadCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}
