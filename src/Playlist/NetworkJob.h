#pragma once

#include <QObject>

#include <functional>
#include <memory>

class NetworkThread;
class QNetworkAccessManager;

// Owns an object that does its work on a NetworkThread, for the thread that made the job: the
// object moves to the network thread at once and starts there from its event loop; it is destroyed
// there when the job is, which stops whatever it still does. Listeners connect to the object's
// signals before handing it over; those signals reach them queued, never once they are gone.
// The job keeps the thread running while the object lives.
class NetworkJob
{
public:
    NetworkJob() = default;
    NetworkJob(std::shared_ptr<NetworkThread> thread, QObject *worker,
               std::function<void(QNetworkAccessManager &)> start);
    NetworkJob(NetworkJob &&other) noexcept;
    NetworkJob &operator=(NetworkJob &&other) noexcept;
    NetworkJob(const NetworkJob &) = delete;
    NetworkJob &operator=(const NetworkJob &) = delete;
    ~NetworkJob();

private:
    void release();

    std::shared_ptr<NetworkThread> m_thread;
    QObject *m_worker = nullptr; // only ever used on the network thread
};
