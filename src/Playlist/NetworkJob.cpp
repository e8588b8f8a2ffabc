#include "Playlist/NetworkJob.h"

#include "Playlist/NetworkThread.h"

#include <QNetworkAccessManager>

#include <utility>

NetworkJob::NetworkJob(std::shared_ptr<NetworkThread> thread, QObject *worker,
                       std::function<void(QNetworkAccessManager &)> start)
    : m_thread(std::move(thread)), m_worker(worker)
{
    worker->moveToThread(m_thread.get());
    m_thread->post([worker, start = std::move(start)](QNetworkAccessManager &manager) {
        // Parented to the manager, so that an object still working when the thread stops ends
        // with it.
        worker->setParent(&manager);
        start(manager);
    });
}

NetworkJob::NetworkJob(NetworkJob &&other) noexcept
    : m_thread(std::move(other.m_thread)), m_worker(std::exchange(other.m_worker, nullptr))
{}

NetworkJob &NetworkJob::operator=(NetworkJob &&other) noexcept
{
    if (this != &other) {
        release();
        m_thread = std::move(other.m_thread);
        m_worker = std::exchange(other.m_worker, nullptr);
    }
    return *this;
}

NetworkJob::~NetworkJob()
{
    release();
}

void NetworkJob::release()
{
    if (!m_worker)
        return;
    // Posted after the start, so it runs after it; the thread still runs, as this job holds it.
    m_thread->post([worker = m_worker](QNetworkAccessManager &) { delete worker; });
    m_worker = nullptr;
    m_thread.reset();
}
