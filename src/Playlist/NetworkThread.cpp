#include "Playlist/NetworkThread.h"

#include "Base/BackgroundPriority.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>

NetworkThread::NetworkThread(QObject *parent) : QThread(parent)
{
    m_anchor.moveToThread(this);
    start();
}

NetworkThread::~NetworkThread()
{
    quit();
    wait();
}

void NetworkThread::post(std::function<void(QNetworkAccessManager &)> work)
{
    QMetaObject::invokeMethod(
        &m_anchor, [this, work = std::move(work)] { work(manager()); }, Qt::QueuedConnection);
}

QNetworkAccessManager &NetworkThread::manager()
{
    if (!m_manager)
        m_manager = new QNetworkAccessManager;
    return *m_manager;
}

void NetworkThread::run()
{
    BackgroundPriority::lowerCurrentThread();
    exec();
    // Work posted before the stop still runs (the last of it usually deletes a transfer); then
    // the manager's children go with it, here, where they live.
    QCoreApplication::sendPostedEvents(&m_anchor);
    delete m_manager;
    m_manager = nullptr;
}
