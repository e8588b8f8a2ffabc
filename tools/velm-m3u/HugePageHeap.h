#pragma once

// Most of what a large list costs this tool beyond parsing is the first touch of the many small
// strings its channels keep: one page fault every 4 KiB. glibc can place its heap on transparent
// huge pages, which cuts those faults to a few hundred, but reads that choice only when a process
// starts. So the tool starts itself once more with it, where the kernel offers huge pages to
// programs that ask; everywhere else, and if that fails, it goes on as it is.

#include <cstdlib> // defines __GLIBC__ where glibc is the C library

#if defined(__linux__) && defined(__GLIBC__)

#include <fstream>
#include <string>

#include <unistd.h>

namespace HugePageHeap {

// A large list is parsed in two halves at once, and the second thread's strings come from a heap
// of its own. glibc asks for huge pages only for the room such a heap is made with, so it is made
// with room for the half of a long list (its top pad) instead of growing a page at a time.
inline constexpr const char *tunable = "glibc.malloc.hugetlb=1:glibc.malloc.top_pad=33554432";

inline bool kernelOffersHugePages()
{
    std::ifstream setting("/sys/kernel/mm/transparent_hugepage/enabled");
    std::string modes;
    std::getline(setting, modes);
    return modes.find("[madvise]") != std::string::npos ||
           modes.find("[always]") != std::string::npos;
}

// Returns only when the process goes on without a new start.
inline void restartWithHugePages(char **argv)
{
    const char *set = std::getenv("GLIBC_TUNABLES");
    const std::string before = set ? set : "";
    // A choice the user made, or this process already restarted: nothing to do.
    if (before.find("glibc.malloc.hugetlb") != std::string::npos || !kernelOffersHugePages())
        return;
    const std::string value = before.empty() ? std::string(tunable) : before + ':' + tunable;
    if (setenv("GLIBC_TUNABLES", value.c_str(), 1) != 0)
        return;
    execv("/proc/self/exe", argv);
    if (set)
        setenv("GLIBC_TUNABLES", before.c_str(), 1);
    else
        unsetenv("GLIBC_TUNABLES");
}

} // namespace HugePageHeap

#else

namespace HugePageHeap {
inline void restartWithHugePages(char **) {}
} // namespace HugePageHeap

#endif
