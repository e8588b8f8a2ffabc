#include "Base/HeapRoom.h"

#include "Base/MemoryPrefault.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <vector>

namespace {

#if defined(__GLIBC__) && defined(__linux__)
// Below 128 KiB, the least size from which glibc maps a block on its own rather than cutting it
// from the heap.
constexpr size_t pieceBytes = 120 * 1024;
#endif

} // namespace

HeapRoom::HeapRoom([[maybe_unused]] size_t bytes)
{
#if defined(__GLIBC__) && defined(__linux__)
    if (bytes < pieceBytes)
        return;
    const size_t count = bytes / pieceBytes + 1; // one more, to be held
    std::vector<void *> pieces;
    pieces.reserve(count);
    for (size_t piece = 0; piece < count; ++piece) {
        void *const memory = std::malloc(pieceBytes);
        if (!memory)
            break;
        pieces.push_back(memory);
    }
    if (pieces.size() < 2) { // no memory to be had: no room
        for (void *const piece : pieces)
            std::free(piece);
        return;
    }
    // The highest piece is the one next to the top of the heap, which glibc gives back to the
    // system when it grows large: held, it keeps the others from joining the top.
    const auto highest = std::max_element(pieces.begin(), pieces.end(), std::less<>());
    m_held = *highest;
    pieces.erase(highest);
    // A page that two pieces share holds the header of the second, which glibc wrote as it cut
    // the piece: it is mapped already.
    for (void *const piece : pieces) {
        MemoryPrefault::prepareForWriting(piece, pieceBytes);
        std::free(piece);
    }
#endif
}

HeapRoom::~HeapRoom()
{
    std::free(m_held);
}
