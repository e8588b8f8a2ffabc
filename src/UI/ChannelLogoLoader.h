#pragma once

#include "Base/WebAddress.h"

#include <QCache>
#include <QImage>
#include <QNetworkAccessManager>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>

// Channel logos for the list rows. A row asks on every paint, so only the rows on screen ever ask:
// scrolling through a million channels fetches only what is seen. Fetching, decoding and the disk
// cache all run off the UI thread; a logo is decoded once at row size and kept on disk between
// launches and in memory while it is used.
class ChannelLogoLoader : public QObject
{
    Q_OBJECT

public:
    // Logos are decoded to fit this square (twice the drawn size, for sharp high-density screens).
    static constexpr int logoPixels = 64;
    static constexpr int maxConcurrentLoads = 6;

    explicit ChannelLogoLoader(QObject *parent = nullptr);
    // Where decoded logos are kept between launches: a folder of the user's cache.
    static QString diskCacheFolder();

    // The logo, or a null image while it loads or when it cannot be had; the first ask of an
    // unknown logo starts loading it.
    QImage logo(const WebAddress &address);
    bool hasFailed(const WebAddress &address) const { return m_failed.contains(address.text()); }
    // Network fetches done so far (not those served from the disk cache).
    int networkFetches() const { return m_networkFetches; }

Q_SIGNALS:
    // The logo is ready or failed for good: rows showing it repaint.
    void logoSettled(const QString &address);

private:
    void startQueuedLoads();
    void load(const QString &address);
    void fetch(const QString &address);
    void settle(const QString &address, const std::optional<QImage> &image);

    QNetworkAccessManager m_network;
    QCache<QString, QImage> m_images;
    QSet<QString> m_failed;
    QSet<QString> m_pending; // queued or loading
    QStringList m_queue;     // the newest asks, which are the rows on screen now, are taken first
    int m_running = 0;
    int m_networkFetches = 0;
};
