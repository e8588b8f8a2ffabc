#include "Playlist/SavedLinksWorker.h"

SavedLinksWorker::SavedLinksWorker() : m_thread([this] { loop(); }) {}

SavedLinksWorker::~SavedLinksWorker()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

void SavedLinksWorker::write(const SavedLinksFile &file, QList<PlaylistEntry> entries,
                             WriteDone done)
{
    {
        const std::lock_guard lock(m_mutex);
        const QString path = file.path();
        auto pending = m_pendingWrites.find(path);
        if (pending == m_pendingWrites.end()) {
            m_pendingWrites.emplace(path,
                                    PendingWrite{file, std::move(entries), {std::move(done)}});
            m_jobs.push_back([this, path] { performWrite(path); });
        } else {
            pending->second.entries = std::move(entries);
            pending->second.done.push_back(std::move(done));
        }
    }
    m_wake.notify_one();
}

void SavedLinksWorker::run(std::function<void()> job)
{
    {
        const std::lock_guard lock(m_mutex);
        m_jobs.push_back(std::move(job));
    }
    m_wake.notify_one();
}

void SavedLinksWorker::loop()
{
    for (;;) {
        std::function<void()> job;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopping || !m_jobs.empty(); });
            if (m_jobs.empty())
                return;
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
        }
        job();
    }
}

void SavedLinksWorker::performWrite(const QString &path)
{
    std::optional<PendingWrite> pending;
    {
        const std::lock_guard lock(m_mutex);
        auto found = m_pendingWrites.find(path);
        pending.emplace(std::move(found->second));
        m_pendingWrites.erase(found);
    }
    const WriteOutcome outcome = pending->file.write(pending->entries);
    // Let go of the list here: when the window has replaced it meanwhile, this is its last holder,
    // and freeing a million entries then costs the window nothing.
    pending->entries.clear();
    for (const WriteDone &done : pending->done)
        done(outcome);
}
