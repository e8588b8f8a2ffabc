#include "App/ControlValues.h"

#include "Base/WebAddress.h"
#include "Playlist/PlaylistEntry.h"
#include "Web/OKVideoContent.h"
#include "Web/YouTubeContent.h"

#include <QJsonObject>
#include <QList>
#include <QUuid>

namespace {

QJsonValue json(const QString &text)
{
    return text;
}
QJsonValue json(const QUuid &id)
{
    return id.toString(QUuid::WithoutBraces).toUpper();
}
QJsonValue json(const WebAddress &url)
{
    return url.text();
}
QJsonValue json(const std::optional<QString> &text)
{
    return text ? QJsonValue(*text) : QJsonValue(QJsonValue::Null);
}
QJsonValue json(const YouTubeContent &content)
{
    return QJsonObject{{QStringLiteral("videoID"), json(content.videoID())},
                       {QStringLiteral("playlistID"), json(content.playlistID())}};
}
QJsonValue json(const OKVideoContent &content)
{
    return QJsonObject{{QStringLiteral("videoID"), content.videoID()}};
}

template <typename T>
std::optional<QJsonValue> asJson(const QVariant &value)
{
    // Read in place: web contents have no default value to copy into.
    if (value.metaType() == QMetaType::fromType<T>())
        return json(*static_cast<const T *>(value.constData()));
    if (value.metaType() == QMetaType::fromType<std::optional<T>>()) {
        const auto &optional = *static_cast<const std::optional<T> *>(value.constData());
        return optional ? json(*optional) : QJsonValue(QJsonValue::Null);
    }
    return std::nullopt;
}

} // namespace

std::optional<QJsonValue> ControlValues::toJson(const QVariant &value)
{
    switch (value.metaType().id()) {
    case QMetaType::Bool:
        return value.toBool();
    case QMetaType::Int:
    case QMetaType::Double:
        return value.toDouble();
    default:
        break;
    }
    if (value.metaType() == QMetaType::fromType<QList<PlaylistEntry>>())
        return double(value.value<QList<PlaylistEntry>>().size());
    for (const auto &convert : {asJson<QString>, asJson<QUuid>, asJson<WebAddress>,
                                asJson<YouTubeContent>, asJson<OKVideoContent>}) {
        if (std::optional<QJsonValue> converted = convert(value))
            return converted;
    }
    return std::nullopt;
}
