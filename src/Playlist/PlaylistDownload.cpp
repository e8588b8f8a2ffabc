#include "Playlist/PlaylistDownload.h"

#include "Base/AppIdentity.h"
#include "Playlist/PlaylistReader.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

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
}

void PlaylistDownload::onReadyRead()
{
    if (m_done)
        return;
    m_body += m_reply->readAll();
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
