#include "Playlist/PlaylistDownload.h"

#include "Base/AppIdentity.h"
#include "Base/MemoryPrefault.h"
#include "Playlist/PlaylistReader.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {
QString statusDescription(int status, const QByteArray &reason)
{
    QString text = u"The server responded with status %1"_s.arg(status);
    if (!reason.isEmpty())
        text += u" (%1)"_s.arg(QString::fromLatin1(reason));
    return text + u'.';
}
} // namespace

PlaylistDownload::PlaylistDownload(QNetworkAccessManager &network, const WebAddress &url,
                                   std::chrono::milliseconds timeout, QObject *parent)
    : QObject(parent)
{
    QNetworkRequest request(QUrl::fromEncoded(url.bytes(), QUrl::StrictMode));
    request.setTransferTimeout(int(timeout.count()));
    request.setHeader(QNetworkRequest::UserAgentHeader, AppIdentity::userAgent());
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    m_reply = network.get(request);
    // The network thread hands the body over a piece at a time, however busy the main thread
    // was: copying a whole list at once would hold the window up for tens of milliseconds.
    m_reply->setReadBufferSize(readBufferBytes);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &PlaylistDownload::onMetaDataChanged);
    connect(m_reply, &QNetworkReply::readyRead, this, &PlaylistDownload::onReadyRead);
    connect(m_reply, &QNetworkReply::finished, this, &PlaylistDownload::onFinished);
}

PlaylistDownload::~PlaylistDownload()
{
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
        m_reply->deleteLater();
    }
}

void PlaylistDownload::onMetaDataChanged()
{
    const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
    if (length.isValid() && length.toLongLong() > PlaylistReader::maximumBytes)
        finish({}, PlaylistReader::tooLargeDescription());
    else if (length.isValid() && m_body.isEmpty())
        reserveBody(length.toLongLong());
}

void PlaylistDownload::reserveBody(qint64 length)
{
    // Mapped in one call rather than a page fault per page as the pieces arrive.
    m_body.reserve(length);
    MemoryPrefault::prepareForWriting(m_body.data(), size_t(m_body.capacity()));
}

void PlaylistDownload::onReadyRead()
{
    if (m_done)
        return;
    // Straight into the body: no intermediate copy of each piece.
    const qsizetype held = m_body.size();
    const qint64 available = m_reply->bytesAvailable();
    m_body.resize(held + available);
    const qint64 read = m_reply->read(m_body.data() + held, available);
    m_body.truncate(held + std::max<qint64>(read, 0));
    if (m_body.size() > PlaylistReader::maximumBytes)
        finish({}, PlaylistReader::tooLargeDescription());
}

void PlaylistDownload::onFinished()
{
    if (m_done)
        return;
    const QVariant status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid() && (status.toInt() < 200 || status.toInt() > 299)) {
        finish({},
               statusDescription(
                   status.toInt(),
                   m_reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toByteArray()));
        return;
    }
    if (m_reply->error() == QNetworkReply::OperationCanceledError ||
        m_reply->error() == QNetworkReply::TimeoutError) {
        // Nothing else cancels the reply: Qt reports its transfer time-out this way.
        finish({}, u"The server did not answer in time."_s);
        return;
    }
    if (m_reply->error() != QNetworkReply::NoError) {
        finish({}, m_reply->errorString());
        return;
    }
    onReadyRead();
    if (!m_done)
        finish(std::exchange(m_body, {}), {});
}

void PlaylistDownload::finish(QByteArray body, const QString &failure)
{
    m_done = true;
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
        m_reply->deleteLater();
        m_reply = nullptr;
    }
    m_body.clear();
    // Always from the event loop, so a listener never runs inside the network code's own call.
    QTimer::singleShot(0, this, [this, body = std::move(body), failure] {
        Q_EMIT finished(body, failure);
        deleteLater();
    });
}
