#pragma once

#include "Base/WebAddress.h"
#include "Playlist/NetworkJob.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <chrono>
#include <memory>

class NetworkThread;

// One download of a playlist body, as the main thread sees it: the transfer itself (see
// PlaylistTransfer) runs on a network thread, so the window never copies the body piece by piece.
// Emits finished() exactly once, from the event loop, then deletes itself; destroyed earlier, it
// aborts the transfer.
class PlaylistDownload : public QObject
{
    Q_OBJECT

public:
    PlaylistDownload(std::shared_ptr<NetworkThread> network, const WebAddress &url,
                     std::chrono::milliseconds timeout, QObject *parent = nullptr);

Q_SIGNALS:
    // failure is the user-facing description; empty on success, when body holds the bytes.
    void finished(const QByteArray &body, const QString &failure);

private:
    void onTransferFinished(const QByteArray &body, const QString &failure);

    // Its transfer reports exactly once.
    NetworkJob m_transfer;
};
