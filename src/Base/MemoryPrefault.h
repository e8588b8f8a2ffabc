#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#include <unistd.h>
#endif

// Fresh memory costs a page fault per page on first touch: about a microsecond on bare metal and
// ten times that on many virtual machines, where a list of 100,000 channels would spend more time
// faulting than parsing. A large block that is about to be filled can be mapped in one call.
class MemoryPrefault
{
public:
    MemoryPrefault() = delete;

    // Maps the whole pages inside [begin, begin + size) writable now, where the system can
    // (Linux 5.14 on); elsewhere, and on failure, the pages fault in as they are touched.
    static void prepareForWriting(void *begin, size_t size)
    {
#if defined(__linux__) && defined(MADV_POPULATE_WRITE)
        static const auto pageMask = uintptr_t(sysconf(_SC_PAGESIZE)) - 1;
        const uintptr_t first = (reinterpret_cast<uintptr_t>(begin) + pageMask) & ~pageMask;
        const uintptr_t end = (reinterpret_cast<uintptr_t>(begin) + size) & ~pageMask;
        if (end > first)
            madvise(reinterpret_cast<void *>(first), end - first, MADV_POPULATE_WRITE);
#else
        (void)begin;
        (void)size;
#endif
    }

    // The same for the room a container has reserved (std::vector, QList, QString, QByteArray).
    template <typename Container>
    static void prepareReservedRoom(Container &container)
    {
        prepareForWriting(container.data(),
                          size_t(container.capacity()) * sizeof(*container.data()));
    }
};
