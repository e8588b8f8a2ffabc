#pragma once

#include "Base/WebAddress.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>

#include <chrono>

class QNetworkAccessManager;
class QNetworkReply;

// One download of a playlist body: redirects followed, abandoned after the time-out passes without
// any progress, refused beyond PlaylistReader::maximumBytes (by the announced length at once,
// otherwise as soon as the body grows past it), and failed on an HTTP status outside 200–299.
// Emits finished() exactly once, from the event loop, then deletes itself. Main thread.
class PlaylistDownload : public QObject
{
    Q_OBJECT

public:
    PlaylistDownload(QNetworkAccessManager &network, const WebAddress &url,
                     std::chrono::milliseconds timeout, QObject *parent = nullptr);
    ~PlaylistDownload() override;

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

    QPointer<QNetworkReply> m_reply;
    QByteArray m_body;
    bool m_done = false;
};
