#pragma once

#include <QString>

// What must happen around the construction of the QApplication: a machine without any display
// gets a clear message and exit status 1 instead of Qt's abort.
class AppStartup
{
public:
    AppStartup() = delete;

    // Why no window can be opened, judged from the environment before Qt is asked; empty when a
    // display may be there.
    static QString missingDisplayReason();
    // From here until leaveGuardedStart(), a fatal Qt message (the platform plugin could not
    // connect to its display server) ends the process with status 1 and a clear message.
    static void enterGuardedStart();
    static void leaveGuardedStart();
    // Before the application object: the browser engine of the web players and the video
    // surface's OpenGL share their contexts, which must be decided before any exists.
    static void prepareGraphics();
    // Sets the process state that libraries loaded later rely on: numbers printed and read with
    // a "." decimal point whatever the user's locale.
    static void fixNumericLocale();
    // Call first, before any thread starts. The C library gives each thread that allocates a
    // memory pool of its own until a limit is reached, and past it hands out pools already in
    // use, the window thread's among them. A worker that shares the window's pool makes the
    // window wait on the pool's lock, for milliseconds at a time while it parses or indexes a
    // long list. The player runs about fifty threads (browser engine, engine and decoders,
    // recorder, workers), more than the library's default of eight per core allows on a small
    // machine, so the limit is raised to leave every thread a pool of its own. Memory stays
    // flat across media loads: a file's decoder threads take the pools that the previous
    // file's threads gave back. A limit the user set (MALLOC_ARENA_MAX) is kept.
    static void giveEachThreadAMemoryPool();
};
