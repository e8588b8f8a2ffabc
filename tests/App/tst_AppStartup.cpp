#include "App/AppStartup.h"

#include <QTest>

#include <latch>
#include <memory>
#include <thread>
#include <vector>

#include <cstdio>
#include <cstdlib>
#include <malloc.h>

namespace {

// More threads than the player runs: about fifty with the browser engine, a file playing and a
// recording.
constexpr int threadsAtOnce = 60;

// The C library's memory pools, counted from its own report of them.
int memoryPools()
{
    char *report = nullptr;
    std::size_t size = 0;
    FILE *stream = open_memstream(&report, &size);
    malloc_info(0, stream);
    std::fclose(stream);
    const QByteArray text(report, qsizetype(size));
    std::free(report);
    return int(text.count("<heap nr="));
}

} // namespace

class tst_AppStartup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void leavesTheWindowsMemoryPoolToTheWindow();
};

void tst_AppStartup::initTestCase()
{
    AppStartup::giveEachThreadAMemoryPool();
}

// Each thread holds an allocation while all of them are alive, as the player's threads do. Every
// one must have been given a pool of its own: one given the window thread's would make the window
// wait on it.
void tst_AppStartup::leavesTheWindowsMemoryPoolToTheWindow()
{
    std::latch allocated(threadsAtOnce);
    std::latch released(1);
    std::vector<std::thread> threads;
    for (int i = 0; i < threadsAtOnce; ++i)
        threads.emplace_back([&] {
            const auto held = std::make_unique<char[]>(4096);
            held[0] = 1;
            allocated.count_down();
            released.wait();
        });
    allocated.wait();
    const int pools = memoryPools();
    released.count_down();
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE_GE(pools, threadsAtOnce + 1);
}

QTEST_GUILESS_MAIN(tst_AppStartup)
#include "tst_AppStartup.moc"
