#include "Playlist/GuideDownload.h"

#include "Base/AppIdentity.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>

using namespace Qt::StringLiterals;

GuideDownload::GuideDownload(GuideCache cache, const WebAddress &address, Limits limits, bool force)
    : m_cache(std::move(cache)), m_address(address), m_limits(limits), m_force(force)
{}

void GuideDownload::start(QNetworkAccessManager &network)
{
    if (m_address.isLocalFile()) {
        const QString path = m_address.toLocalFile();
        const bool exists = QFile::exists(path);
        finish(exists ? path : QString(), exists ? QString() : u"The guide file is missing."_s);
        return;
    }
    const std::optional<GuideCache::Kept> kept = m_cache.find(m_address);
    if (kept && !m_force && kept->isFresh(QDateTime::currentDateTimeUtc())) {
        finish(kept->bodyPath, {});
        return;
    }
    request(network, kept);
}

GuideDownload::~GuideDownload()
{
    stop();
}

void GuideDownload::stop()
{
    if (m_reply) {
        m_reply->disconnect(this);
        m_reply->abort();
        m_reply->deleteLater();
        m_reply = nullptr;
    }
    // A download given up half-way leaves nothing behind.
    if (m_file.isOpen()) {
        m_file.close();
        m_file.remove();
    }
}

QString GuideDownload::tooLargeDescription(qint64 limit)
{
    return u"The guide is larger than %1 MiB."_s.arg(double(limit) / (1024 * 1024), 0, 'f', 0);
}

void GuideDownload::request(QNetworkAccessManager &network,
                            const std::optional<GuideCache::Kept> &kept)
{
    m_file.setFileName(m_cache.downloadPath(m_address));
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        finish({}, m_file.errorString());
        return;
    }
    QNetworkRequest request(QUrl::fromEncoded(m_address.bytes(), QUrl::StrictMode));
    request.setTransferTimeout(int(m_limits.timeout.count()));
    request.setHeader(QNetworkRequest::UserAgentHeader, AppIdentity::userAgent());
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    // The server's own gzip stays as it is on disk; the reader inflates it as a stream.
    request.setRawHeader("Accept-Encoding", "gzip");
    if (kept && !kept->entityTag.isEmpty())
        request.setRawHeader("If-None-Match", kept->entityTag);
    if (kept && !kept->lastModified.isEmpty())
        request.setRawHeader("If-Modified-Since", kept->lastModified);
    m_reply = network.get(request);
    m_reply->setReadBufferSize(256 * 1024);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, &GuideDownload::onMetaDataChanged);
    connect(m_reply, &QNetworkReply::readyRead, this, &GuideDownload::onReadyRead);
    connect(m_reply, &QNetworkReply::finished, this, &GuideDownload::onFinished);
}

void GuideDownload::onMetaDataChanged()
{
    const QVariant length = m_reply->header(QNetworkRequest::ContentLengthHeader);
    if (length.isValid() && length.toLongLong() > m_limits.bytes)
        finish({}, tooLargeDescription(m_limits.bytes));
}

void GuideDownload::onReadyRead()
{
    // A reply the network stack aborted (a time-out) has nothing left to read.
    if (m_done || !m_reply->isOpen())
        return;
    const QByteArray piece = m_reply->readAll();
    if (m_file.write(piece) != piece.size())
        return finish({}, m_file.errorString());
    if (m_file.size() > m_limits.bytes)
        finish({}, tooLargeDescription(m_limits.bytes));
}

void GuideDownload::onFinished()
{
    if (m_done)
        return;
    onReadyRead();
    if (m_done)
        return;
    const int status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QDateTime now = QDateTime::currentDateTimeUtc();
    if (status == 304) {
        m_file.remove();
        if (const std::optional<QString> failure = m_cache.confirm(m_address, now))
            return finish({}, *failure);
        return finish(m_cache.find(m_address)->bodyPath, {});
    }
    if (m_reply->error() != QNetworkReply::NoError)
        return finish({}, m_reply->errorString());
    if (status < 200 || status > 299)
        return finish({}, u"The server responded with status %1."_s.arg(status));
    if (!m_file.flush())
        return finish({}, m_file.errorString());
    m_file.close();
    if (const std::optional<QString> failure = m_cache.keep(
            m_address, m_reply->rawHeader("ETag"), m_reply->rawHeader("Last-Modified"), now))
        return finish({}, *failure);
    finish(m_cache.find(m_address)->bodyPath, {});
}

void GuideDownload::finish(const QString &bodyPath, const QString &failure)
{
    if (m_done)
        return;
    m_done = true;
    stop();
    Q_EMIT finished(bodyPath, failure);
}
