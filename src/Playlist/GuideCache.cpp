#include "Playlist/GuideCache.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QStandardPaths>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {
constexpr qint64 maxDescriptionBytes = 64 * 1024;
const QString bodySuffix = u".xmltv"_s;
const QString descriptionSuffix = u".json"_s;
const QString downloadSuffix = u".download"_s;
} // namespace

bool GuideCache::Kept::isFresh(const QDateTime &now) const
{
    const auto age = std::chrono::milliseconds(fetched.msecsTo(now));
    return fetched.isValid() && age >= std::chrono::milliseconds(0) && age < refreshInterval;
}

GuideCache::GuideCache(QString folder) : m_folder(std::move(folder)) {}

QString GuideCache::defaultFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::CacheLocation) + u"/guides"_s;
}

QString GuideCache::basePath(const WebAddress &address) const
{
    const QByteArray name =
        QCryptographicHash::hash(address.bytes(), QCryptographicHash::Sha256).toHex().left(32);
    return m_folder + u'/' + QString::fromLatin1(name);
}

QString GuideCache::downloadPath(const WebAddress &address) const
{
    QDir().mkpath(m_folder);
    return basePath(address) + downloadSuffix;
}

std::optional<GuideCache::Kept> GuideCache::find(const WebAddress &address) const
{
    const QString base = basePath(address);
    QFile description(base + descriptionSuffix);
    if (!QFile::exists(base + bodySuffix) || !description.open(QIODevice::ReadOnly) ||
        description.size() > maxDescriptionBytes)
        return std::nullopt;
    const QJsonObject object = QJsonDocument::fromJson(description.readAll()).object();
    // Another address whose name happened to collide is not this one's guide.
    if (object.value(u"address"_s).toString().toUtf8() != address.bytes())
        return std::nullopt;
    return Kept{base + bodySuffix, object.value(u"etag"_s).toString().toLatin1(),
                object.value(u"lastModified"_s).toString().toLatin1(),
                QDateTime::fromString(object.value(u"fetched"_s).toString(), Qt::ISODateWithMs)};
}

std::optional<QString> GuideCache::describe(const WebAddress &address, const Kept &kept) const
{
    const QJsonObject object{{u"address"_s, QString::fromUtf8(address.bytes())},
                             {u"etag"_s, QString::fromLatin1(kept.entityTag)},
                             {u"lastModified"_s, QString::fromLatin1(kept.lastModified)},
                             {u"fetched"_s, kept.fetched.toUTC().toString(Qt::ISODateWithMs)}};
    QSaveFile file(basePath(address) + descriptionSuffix);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(QJsonDocument(object).toJson(QJsonDocument::Compact)) < 0 || !file.commit())
        return file.errorString();
    return std::nullopt;
}

std::optional<QString> GuideCache::keep(const WebAddress &address, const QByteArray &entityTag,
                                        const QByteArray &lastModified, const QDateTime &fetched)
{
    const QString base = basePath(address);
    // The old description goes first: a body without one is never taken for current.
    QFile::remove(base + descriptionSuffix);
    // rename() replaces the old body in one step; QFile::rename would refuse an existing target.
    if (std::rename(QFile::encodeName(base + downloadSuffix).constData(),
                    QFile::encodeName(base + bodySuffix).constData()) != 0)
        return u"The guide could not be kept in %1."_s.arg(QDir::toNativeSeparators(m_folder));
    return describe(address, {base + bodySuffix, entityTag, lastModified, fetched});
}

std::optional<QString> GuideCache::confirm(const WebAddress &address, const QDateTime &fetched)
{
    std::optional<Kept> kept = find(address);
    if (!kept)
        return u"The kept guide is gone."_s;
    kept->fetched = fetched;
    return describe(address, *kept);
}
