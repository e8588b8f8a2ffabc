#include "Base/HeapRoom.h"

#include <QTest>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr size_t megabyte = 1024 * 1024;
const size_t pageSize = size_t(sysconf(_SC_PAGESIZE));

// Page faults the calling thread has taken so far.
long threadPageFaults()
{
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_minflt;
}

// The process's resident memory.
size_t residentBytes()
{
    FILE *statm = std::fopen("/proc/self/statm", "r");
    unsigned long size = 0, resident = 0;
    if (statm) {
        if (std::fscanf(statm, "%lu %lu", &size, &resident) != 2)
            resident = 0;
        std::fclose(statm);
    }
    return resident * pageSize;
}

// Blocks of the sizes a channel list's strings have (24 to 216 bytes), bytes of them in all,
// each written as the parser writes its strings.
std::vector<void *> allocateStrings(size_t bytes)
{
    std::vector<void *> blocks;
    blocks.reserve(bytes / 64);
    unsigned seed = 1;
    for (size_t made = 0; made < bytes;) {
        seed = seed * 1103515245 + 12345;
        const size_t size = 24 + (seed >> 16) % 193;
        void *const block = std::malloc(size);
        std::memset(block, 'x', size);
        blocks.push_back(block);
        made += size;
    }
    return blocks;
}

void freeAll(std::vector<void *> &blocks)
{
    for (void *const block : blocks)
        std::free(block);
    blocks.clear();
}

// Runs work on this thread, or on a thread of its own (which the C library gives a heap of its
// own), and returns when it is done.
template <typename Work>
void runOn(bool ownThread, Work &&work)
{
    if (!ownThread)
        return work();
    std::thread(work).join();
}

} // namespace

class tst_HeapRoom : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void blocksCutFromTheRoomAreMappedAlready_data();
    void blocksCutFromTheRoomAreMappedAlready();
    void whatWasNotUsedGoesBackWithTheRoom_data();
    void whatWasNotUsedGoesBackWithTheRoom();
};

void tst_HeapRoom::blocksCutFromTheRoomAreMappedAlready_data()
{
    QTest::addColumn<bool>("ownThread");
    QTest::addColumn<bool>("heapUsedBefore"); // small blocks were freed in it first
    QTest::newRow("the main thread's heap") << false << false;
    QTest::newRow("a thread's own heap") << true << false;
    QTest::newRow("a heap that has had blocks of the same sizes") << true << true;
}

// The room is worth making only if the many small blocks that follow are cut from it, in memory
// it mapped, rather than from fresh memory that faults in a page at a time.
void tst_HeapRoom::blocksCutFromTheRoomAreMappedAlready()
{
    QFETCH(bool, ownThread);
    QFETCH(bool, heapUsedBefore);
    constexpr size_t stringBytes = 12 * megabyte;
    long faults = -1;
    bool made = false;
    runOn(ownThread, [&] {
        if (heapUsedBefore) {
            std::vector<void *> earlier = allocateStrings(megabyte);
            freeAll(earlier);
        }
        const HeapRoom room(stringBytes + stringBytes / 4);
        made = room.isMade();
        const long before = threadPageFaults();
        std::vector<void *> strings = allocateStrings(stringBytes);
        faults = threadPageFaults() - before;
        freeAll(strings);
    });
    QVERIFY(made);
    // The list of blocks itself faults in (24 pages of pointers), and so may a page or two at the
    // room's ends: far fewer than the 3,000 pages the blocks fill.
    QCOMPARE_LT(faults, long(stringBytes / pageSize / 50));
}

void tst_HeapRoom::whatWasNotUsedGoesBackWithTheRoom_data()
{
    QTest::addColumn<bool>("ownThread");
    QTest::newRow("the main thread's heap") << false;
    QTest::newRow("a thread's own heap") << true;
}

// The room is memory the process holds while it stands: all of it mapped, and given back when it
// goes, so that a guess larger than what was needed costs nothing for long.
void tst_HeapRoom::whatWasNotUsedGoesBackWithTheRoom()
{
    QFETCH(bool, ownThread);
    constexpr size_t roomBytes = 32 * megabyte;
    size_t before = 0, standing = 0, after = 0;
    runOn(ownThread, [&] {
        before = residentBytes();
        {
            const HeapRoom room(roomBytes);
            standing = residentBytes();
        }
        after = residentBytes();
    });
    QCOMPARE_GT(standing, before + roomBytes * 9 / 10);
    QCOMPARE_LT(after, before + 2 * megabyte);
}

QTEST_GUILESS_MAIN(tst_HeapRoom)
#include "tst_HeapRoom.moc"
