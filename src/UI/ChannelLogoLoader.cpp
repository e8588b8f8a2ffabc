#include "UI/ChannelLogoLoader.h"

#include "Base/BackgroundTask.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>

#include <chrono>

using namespace Qt::StringLiterals;

namespace {

using namespace std::chrono_literals;
constexpr auto fetchTimeout = 20s;
// Logos are small; anything larger is not a logo and is not read.
constexpr qint64 maxLogoBytes = 8 * 1024 * 1024;
// The memory cache counts kilobytes of decoded pixels.
constexpr int memoryCacheKilobytes = 48 * 1024;
// Asks of rows scrolled past long ago are dropped; they ask again when shown again.
constexpr qsizetype maxQueued = 256;

QString cacheFile(const QString &address)
{
    const QByteArray digest =
        QCryptographicHash::hash(address.toUtf8(), QCryptographicHash::Sha1).toHex();
    return ChannelLogoLoader::diskCacheFolder() + u'/' + QString::fromLatin1(digest) + u".png"_s;
}

std::optional<QImage> decoded(const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    QSize size = reader.size();
    if (size.isValid()) {
        size.scale(ChannelLogoLoader::logoPixels, ChannelLogoLoader::logoPixels,
                   Qt::KeepAspectRatio);
        reader.setScaledSize(size.expandedTo(QSize(1, 1)));
    }
    QImage image = reader.read();
    if (image.isNull())
        return std::nullopt;
    if (image.width() > ChannelLogoLoader::logoPixels ||
        image.height() > ChannelLogoLoader::logoPixels)
        image = image.scaled(ChannelLogoLoader::logoPixels, ChannelLogoLoader::logoPixels,
                             Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

void storeInCache(const QString &address, const QImage &image)
{
    QDir().mkpath(ChannelLogoLoader::diskCacheFolder());
    QSaveFile file(cacheFile(address));
    if (file.open(QIODevice::WriteOnly) && image.save(&file, "PNG"))
        file.commit();
}

// Regular files only: a device or a pipe named as a logo could give bytes without end or none
// ever. The cap holds while reading, whatever size the file claims.
std::optional<QImage> readFile(const QString &path)
{
    if (!QFileInfo(path).isFile())
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.read(maxLogoBytes + 1);
    if (bytes.size() > maxLogoBytes)
        return std::nullopt;
    return decoded(bytes);
}

// On a worker: the cached copy, else a local file decoded and cached. Nothing means "fetch it".
struct LocalResult
{
    std::optional<QImage> image;
    bool needsFetch = false;
};

LocalResult loadLocally(const QString &address)
{
    if (std::optional<QImage> cached = readFile(cacheFile(address)))
        return {cached, false};
    const std::optional<WebAddress> url = WebAddress::fromText(address);
    if (url && url->isLocalFile()) {
        std::optional<QImage> image = readFile(url->toLocalFile());
        if (image)
            storeInCache(address, *image);
        return {image, false};
    }
    const QString scheme = url ? url->scheme().toLower() : QString();
    return {std::nullopt, scheme == u"http" || scheme == u"https" || scheme == u"data"};
}

} // namespace

ChannelLogoLoader::ChannelLogoLoader(QObject *parent) : QObject(parent), m_network(this)
{
    m_images.setMaxCost(memoryCacheKilobytes);
    m_network.setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
    m_network.setTransferTimeout(int(std::chrono::milliseconds(fetchTimeout).count()));
}

QString ChannelLogoLoader::diskCacheFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + u"/logos"_s;
}

QImage ChannelLogoLoader::logo(const WebAddress &address)
{
    const QString key = address.text();
    if (const QImage *image = m_images.object(key))
        return *image;
    if (m_failed.contains(key))
        return {};
    if (m_pending.contains(key)) {
        // Asked again: it is on screen now, so it goes to the front.
        if (const qsizetype at = m_queue.indexOf(key); at >= 0)
            m_queue.move(at, m_queue.size() - 1);
        return {};
    }
    m_pending.insert(key);
    m_queue.append(key);
    if (m_queue.size() > maxQueued)
        m_pending.remove(m_queue.takeFirst());
    startQueuedLoads();
    return {};
}

void ChannelLogoLoader::startQueuedLoads()
{
    while (m_running < maxConcurrentLoads && !m_queue.isEmpty()) {
        ++m_running;
        load(m_queue.takeLast());
    }
}

void ChannelLogoLoader::load(const QString &address)
{
    runInBackground(
        this, [address] { return loadLocally(address); },
        [this, address](const LocalResult &result) {
            if (result.needsFetch)
                fetch(address);
            else
                settle(address, result.image);
        });
}

void ChannelLogoLoader::fetch(const QString &address)
{
    ++m_networkFetches;
    QNetworkReply *reply = m_network.get(QNetworkRequest(QUrl(address)));
    // A body past the cap is not a logo: the transfer ends as soon as it passes it, before the
    // whole of it is held in memory.
    connect(reply, &QNetworkReply::downloadProgress, reply, [reply](qint64 received, qint64 total) {
        if (received > maxLogoBytes || total > maxLogoBytes)
            reply->abort();
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply, address] {
        reply->deleteLater();
        const bool ok = reply->error() == QNetworkReply::NoError;
        const QByteArray bytes = ok ? reply->read(maxLogoBytes) : QByteArray();
        if (bytes.isEmpty()) {
            settle(address, std::nullopt);
            return;
        }
        runInBackground(
            this,
            [address, bytes] {
                std::optional<QImage> image = decoded(bytes);
                if (image)
                    storeInCache(address, *image);
                return image;
            },
            [this, address](const std::optional<QImage> &image) { settle(address, image); });
    });
}

void ChannelLogoLoader::settle(const QString &address, const std::optional<QImage> &image)
{
    --m_running;
    m_pending.remove(address);
    if (image)
        m_images.insert(address, new QImage(*image), int(image->sizeInBytes() / 1024) + 1);
    else
        m_failed.insert(address);
    Q_EMIT logoSettled(address);
    startQueuedLoads();
}
