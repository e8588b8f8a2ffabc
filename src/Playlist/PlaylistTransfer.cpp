#include "Playlist/PlaylistTransfer.h"

#include "Base/AppIdentity.h"
#include "Base/MemoryPrefault.h"
#include "Playlist/PlaylistReader.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
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

PlaylistTransfer::PlaylistTransfer(const WebAddress &url, std::chrono::milliseconds timeout)
    : m_url(url), m_timeout(timeout)
{}

PlaylistTransfer::~PlaylistTransfer()
{
    dropReply();
}

void PlaylistTransfer::start(QNetworkAccessManager &network)
{
    QNetworkRequest request(QUrl::fromEncoded(m_url.bytes(), QUrl::StrictMode));
    request.setTransferTimeout(int(m_timeout.count()));
    request.setHeader(QNetworkRequest::UserAgentHeader, AppIdentity::userAgent());
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    m_reply = network.get(request);
    // Qt's own buffer stays small: the body is held once, here, not also in the reply.
    m_reply->setReadBufferSize(readBufferBytes);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &PlaylistTransfer::onMetaDataChanged);
    connect(m_reply, &QNetworkReply::readyRead, this, &PlaylistTransfer::onReadyRead);
    connect(m_reply, &QNetworkReply::finished, this, &PlaylistTransfer::onFinished);
}

void PlaylistTransfer::onMetaDataChanged()
{
    const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
    if (length.isValid() && length.toLongLong() > PlaylistReader::maximumBytes)
        finish({}, PlaylistReader::tooLargeDescription());
    else if (length.isValid() && m_body.isEmpty())
        reserveBody(length.toLongLong());
}

void PlaylistTransfer::reserveBody(qint64 length)
{
    // Mapped in one call rather than a page fault per page as the pieces arrive.
    m_body.reserve(length);
    MemoryPrefault::prepareReservedRoom(m_body);
}

void PlaylistTransfer::onReadyRead()
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

void PlaylistTransfer::onFinished()
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

void PlaylistTransfer::finish(QByteArray body, const QString &failure)
{
    m_done = true;
    dropReply();
    m_body.clear();
    Q_EMIT finished(body, failure);
}

void PlaylistTransfer::dropReply()
{
    if (!m_reply)
        return;
    m_reply->disconnect(this);
    m_reply->abort();
    m_reply->deleteLater();
    m_reply = nullptr;
}
