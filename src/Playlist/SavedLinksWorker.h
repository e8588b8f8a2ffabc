#pragma once

#include "Playlist/PlaylistEntry.h"
#include "Playlist/SavedLinksFile.h"

#include <QList>
#include <QString>

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

// The one thread that reads and writes the saved-links files, so that neither a million links
// nor a slow or locked disk ever holds up the window.
//
// Jobs run one at a time in the order they were asked for. Writes of one file coalesce: a list
// handed over while an older one still waits replaces it, and every caller of either hears the
// outcome of the one write that carries the newest list. The destructor finishes every job and
// write already asked for before it returns, so quitting never drops a change.
class SavedLinksWorker
{
public:
    // The failure's description; nothing when the list was written.
    using WriteOutcome = std::optional<QString>;
    using WriteDone = std::function<void(const WriteOutcome &)>;

    SavedLinksWorker();
    ~SavedLinksWorker();
    SavedLinksWorker(const SavedLinksWorker &) = delete;
    SavedLinksWorker &operator=(const SavedLinksWorker &) = delete;

    // done runs on the worker thread.
    void write(const SavedLinksFile &file, QList<PlaylistEntry> entries, WriteDone done);
    void run(std::function<void()> job);

private:
    struct PendingWrite
    {
        SavedLinksFile file;
        QList<PlaylistEntry> entries;
        std::vector<WriteDone> done;
    };

    void loop();
    void performWrite(const QString &path);

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<std::function<void()>> m_jobs;
    std::map<QString, PendingWrite> m_pendingWrites; // by file path
    bool m_stopping = false;
    std::thread m_thread; // last: starts once everything it uses exists
};
