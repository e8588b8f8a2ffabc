#pragma once

#include <QObject>
#include <QThread>

#include <functional>

class QNetworkAccessManager;

// A thread of its own for network transfers whose bodies are large: Qt hands a reply's bytes to
// the thread its manager lives on, and copying tens of megabytes there (and faulting in the pages
// they land in) must not hold up the window. Work posted here runs from this thread's event loop
// with its manager; whatever that work parents to the manager is destroyed with it, on this
// thread, when the thread stops. Created, posted to and destroyed on one thread, usually the main
// one.
class NetworkThread : public QThread
{
    Q_OBJECT

public:
    // Starts the thread; nothing here waits for it.
    explicit NetworkThread(QObject *parent = nullptr);
    // Stops the thread once the work posted so far has run; transfers still under way are aborted.
    ~NetworkThread() override;

    // Runs work on this thread, after the work posted before it.
    void post(std::function<void(QNetworkAccessManager &)> work);

protected:
    void run() override;

private:
    // Made on this thread by the first work, and destroyed there when the thread stops.
    QNetworkAccessManager &manager();

    QObject m_anchor; // lives on this thread, so calls queued to it run here
    QNetworkAccessManager *m_manager = nullptr;
};
