#include "Playlist/PlaylistJson.h"

#include "Base/JsonText.h"
#include "Playlist/StoredListScanner.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

namespace {

void appendKey(QByteArray &out, const char *key)
{
    out.append(",\"").append(key).append("\":");
}

void appendOptionalString(QByteArray &out, const char *key, const std::optional<QString> &value)
{
    if (value) {
        appendKey(out, key);
        JsonText::appendString(out, *value);
    }
}

// Only the canonical 8-4-4-4-12 hexadecimal form is a stored id (either letter case).
std::optional<QUuid> uuidFromText(const QString &text)
{
    static const QRegularExpression canonical(QStringLiteral(
        "^[0-9A-Fa-f]{8}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{12}$"));
    if (!canonical.match(text).hasMatch())
        return std::nullopt;
    return QUuid::fromString(text);
}

std::optional<WebAddress> addressFromJson(const QJsonValue &value)
{
    return value.isString() ? WebAddress::fromText(value.toString()) : std::nullopt;
}

// An optional key: missing or null is absent (a present nothing); a wrong kind is an error.
template <typename Decode>
bool decodeOptional(const QJsonObject &object, const char *key, Decode decode)
{
    const QJsonValue value = object.value(QLatin1StringView(key));
    return value.isUndefined() || value.isNull() || decode(value);
}

} // namespace

void PlaylistJson::appendEncoded(QByteArray &out, const PlaylistEntry &entry)
{
    out.append("{\"id\":");
    JsonText::appendAscii(out, entry.id.toByteArray(QUuid::WithoutBraces).toUpper());
    appendKey(out, "name");
    JsonText::appendString(out, entry.name);
    appendKey(out, "url");
    JsonText::appendAscii(out, entry.url.bytes());
    if (entry.logoURL) {
        appendKey(out, "logoURL");
        JsonText::appendAscii(out, entry.logoURL->bytes());
    }
    appendOptionalString(out, "groupTitle", entry.groupTitle);
    appendOptionalString(out, "countryCode", entry.countryCode);
    out.append('}');
}

QByteArray PlaylistJson::encode(const PlaylistEntry &entry)
{
    QByteArray out;
    appendEncoded(out, entry);
    return out;
}

QByteArray PlaylistJson::encode(const QList<PlaylistEntry> &entries)
{
    QByteArray out("[");
    for (const PlaylistEntry &entry : entries) {
        if (out.size() > 1)
            out.append(',');
        appendEncoded(out, entry);
    }
    out.append(']');
    return out;
}

std::optional<PlaylistEntry> PlaylistJson::decodeEntry(const QJsonObject &object)
{
    const QJsonValue id = object.value(QLatin1StringView("id"));
    const QJsonValue name = object.value(QLatin1StringView("name"));
    if (!id.isString() || !name.isString())
        return std::nullopt;
    const std::optional<QUuid> uuid = uuidFromText(id.toString());
    const std::optional<WebAddress> url = addressFromJson(object.value(QLatin1StringView("url")));
    if (!uuid || !url)
        return std::nullopt;

    PlaylistEntry entry{*uuid, name.toString(), *url, {}, {}, {}};
    const bool optionalsDecode =
        decodeOptional(
            object, "logoURL",
            [&](const QJsonValue &v) { return bool(entry.logoURL = addressFromJson(v)); }) &&
        decodeOptional(object, "groupTitle",
                       [&](const QJsonValue &v) {
                           return v.isString() && bool(entry.groupTitle = v.toString());
                       }) &&
        decodeOptional(object, "countryCode", [&](const QJsonValue &v) {
            return v.isString() && bool(entry.countryCode = v.toString());
        });
    return optionalsDecode ? std::optional(std::move(entry)) : std::nullopt;
}

std::optional<QList<PlaylistEntry>>
PlaylistJson::decodeList(QByteArrayView json, const StoredListScanner::Progress &progress)
{
    if (std::optional<QList<PlaylistEntry>> written = StoredListScanner::scan(json, progress))
        return written;
    return decodeDocument(json.toByteArray());
}

std::optional<QList<PlaylistEntry>> PlaylistJson::decodeDocument(const QByteArray &json)
{
    // Qt's reader drops a byte-order mark that opens a string, so a name that begins with U+FEFF
    // would lose it; given as an escape it stays. In JSON text these bytes occur inside strings
    // only, where the escape means the same character.
    static const QByteArray byteOrderMark = "\xEF\xBB\xBF";
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(
        json.contains(byteOrderMark) ? QByteArray(json).replace(byteOrderMark, "\\ufeff") : json,
        &error);
    if (error.error != QJsonParseError::NoError || !document.isArray())
        return std::nullopt;
    QList<PlaylistEntry> entries;
    const QJsonArray array = document.array();
    entries.reserve(array.size());
    for (const QJsonValue &value : array) {
        std::optional<PlaylistEntry> entry =
            value.isObject() ? decodeEntry(value.toObject()) : std::nullopt;
        if (!entry)
            return std::nullopt;
        entries.append(std::move(*entry));
    }
    return entries;
}
