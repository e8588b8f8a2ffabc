#pragma once

#include "Base/WebAddress.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>

#include <chrono>

class QNetworkAccessManager;
class QNetworkReply;

// The transfer behind a PlaylistDownload, on the thread of the manager it runs with: redirects
// followed, abandoned after the time-out passes without any progress, refused beyond
// PlaylistReader::maximumBytes (by the announced length at once, otherwise as soon as the body
// grows past it), and failed on an HTTP status outside 200–299. Emits finished() exactly once,
// unless it is destroyed first, which aborts the transfer.
class PlaylistTransfer : public QObject
{
    Q_OBJECT

public:
    PlaylistTransfer(const WebAddress &url, std::chrono::milliseconds timeout);
    ~PlaylistTransfer() override;

    // Starts the request, on the manager's thread, which this transfer must have moved to.
    void start(QNetworkAccessManager &network);

Q_SIGNALS:
    // failure is the user-facing description; empty on success, when body holds the bytes.
    void finished(const QByteArray &body, const QString &failure);

private:
    static constexpr qint64 readBufferBytes = 256 * 1024;

    void onMetaDataChanged();
    // Room for an announced body, so that it is neither moved nor faulted in piece by piece.
    void reserveBody(qint64 length);
    void onReadyRead();
    void onFinished();
    void finish(QByteArray body, const QString &failure);
    void dropReply();

    WebAddress m_url;
    std::chrono::milliseconds m_timeout;
    QPointer<QNetworkReply> m_reply;
    QByteArray m_body;
    bool m_done = false;
};
