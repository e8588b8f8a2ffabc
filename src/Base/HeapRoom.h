#pragma once

#include <cstddef>

// Room in the calling thread's heap, mapped in one step, for the many small blocks the thread is
// about to allocate: a list of 100,000 channels makes 300,000 strings, and on a virtual machine
// the first touch of each fresh page of them costs several times what mapping the page with its
// neighbours does (see MemoryPrefault).
//
// With glibc the room is a run of blocks, each below the size glibc maps on its own, that are
// mapped and freed again while the highest of them is held: glibc joins them into one free chunk
// that later allocations are cut from in order, instead of giving them back to the system at the
// top of the heap. When the room goes, the held block is freed, and with it whatever was left of
// the room can return to the system. Elsewhere, and where the memory cannot be had, nothing is
// made and blocks fault in as they are touched.
class HeapRoom
{
public:
    explicit HeapRoom(size_t bytes);
    ~HeapRoom();
    HeapRoom(const HeapRoom &) = delete;
    HeapRoom &operator=(const HeapRoom &) = delete;

    // Whether room was made (it can only be with glibc on Linux).
    bool isMade() const { return m_held != nullptr; }

private:
    void *m_held = nullptr;
};
