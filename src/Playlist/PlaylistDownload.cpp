#include "Playlist/PlaylistDownload.h"

#include "Playlist/PlaylistTransfer.h"

#include <QNetworkAccessManager>

#include <utility>

PlaylistDownload::PlaylistDownload(std::shared_ptr<NetworkThread> network, const WebAddress &url,
                                   std::chrono::milliseconds timeout, QObject *parent)
    : QObject(parent)
{
    auto *transfer = new PlaylistTransfer(url, timeout);
    connect(transfer, &PlaylistTransfer::finished, this, &PlaylistDownload::onTransferFinished,
            Qt::QueuedConnection);
    m_transfer =
        NetworkJob(std::move(network), transfer,
                   [transfer](QNetworkAccessManager &manager) { transfer->start(manager); });
}

void PlaylistDownload::onTransferFinished(const QByteArray &body, const QString &failure)
{
    Q_EMIT finished(body, failure);
    deleteLater();
}
