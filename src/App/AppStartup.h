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
    // Call first, before any thread starts. The C library gives threads that allocate at once
    // pools of their own, up to eight per core, and seldom returns what is freed in them; the
    // engine starts its decoding threads again for every file, and the player's memory grew by
    // some 45 MB with each of the first loads of a 1080p file. Two pools keep it flat. A limit
    // the user set (MALLOC_ARENA_MAX) is kept.
    static void limitMemoryPools();
};
