#pragma once

#include "Base/WebAddress.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <chrono>
#include <optional>

// Downloaded programme guides, kept between runs with what their server said of them, so that a
// guide is fetched again only after a while and then only when it changed. One body file and one
// small description file per address; both are replaced by rename, so a killed player leaves the
// old guide or the new one, never a mix. Any thread; two caches on one folder must not write the
// same address at once.
class GuideCache
{
public:
    // A guide younger than this is used as it is, without asking its server.
    static constexpr std::chrono::hours refreshInterval{12};

    struct Kept
    {
        QString bodyPath;
        QByteArray entityTag;
        QByteArray lastModified;
        QDateTime fetched;

        bool isFresh(const QDateTime &now) const;
    };

    explicit GuideCache(QString folder);
    static QString defaultFolder();

    // What is kept for the address; nothing when its body or description is missing or damaged.
    std::optional<Kept> find(const WebAddress &address) const;
    // Where a download of the address writes before it is kept.
    QString downloadPath(const WebAddress &address) const;
    // Moves a finished download into place with what its server said; the reason on failure.
    std::optional<QString> keep(const WebAddress &address, const QByteArray &entityTag,
                                const QByteArray &lastModified, const QDateTime &fetched);
    // The server said the kept body is still current.
    std::optional<QString> confirm(const WebAddress &address, const QDateTime &fetched);

private:
    QString basePath(const WebAddress &address) const;
    std::optional<QString> describe(const WebAddress &address, const Kept &kept) const;

    QString m_folder;
};
