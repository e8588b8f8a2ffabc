#pragma once

#include "Base/WebAddress.h"
#include "Playlist/GuideCache.h"

#include <QFile>
#include <QObject>
#include <QPointer>
#include <QString>

#include <chrono>

class QNetworkAccessManager;
class QNetworkReply;

// Brings one programme guide into the cache: nothing at all while the kept copy is fresh, a
// conditional request (ETag, Last-Modified) when it is older, a whole download otherwise. The body
// goes to disk as it arrives, so a guide of hundreds of megabytes never sits in memory. Redirects
// are followed; a download is abandoned after the time-out passes without progress and refused
// beyond its limit of bytes. Runs on the thread of the manager it starts with (a NetworkThread,
// so that neither the transfer nor the disk holds up the window) and emits finished() exactly
// once, unless it is destroyed first, which stops the transfer and removes a body not yet kept.
class GuideDownload : public QObject
{
    Q_OBJECT

public:
    static constexpr qint64 maximumBytes = qint64(1) << 30;

    struct Limits
    {
        std::chrono::milliseconds timeout;
        qint64 bytes = maximumBytes;
    };

    // force: asks the server even when the kept copy is fresh.
    GuideDownload(GuideCache cache, const WebAddress &address, Limits limits, bool force);
    ~GuideDownload() override;

    // Looks in the cache, then asks the server if need be; on the manager's thread, which this
    // download must have moved to.
    void start(QNetworkAccessManager &network);

    static QString tooLargeDescription(qint64 limit);

Q_SIGNALS:
    // bodyPath: the kept guide, or empty with the user-facing reason in failure.
    void finished(const QString &bodyPath, const QString &failure);

private:
    void request(QNetworkAccessManager &network, const std::optional<GuideCache::Kept> &kept);
    void onMetaDataChanged();
    void onReadyRead();
    void onFinished();
    // Ends the network request and removes a body not yet kept.
    void stop();
    void finish(const QString &bodyPath, const QString &failure);

    GuideCache m_cache;
    WebAddress m_address;
    Limits m_limits;
    bool m_force;
    QFile m_file;
    QPointer<QNetworkReply> m_reply;
    bool m_done = false;
};
