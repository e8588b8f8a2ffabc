#pragma once

#include "Playlist/PlaylistEntry.h"
#include "Playlist/StoredListScanner.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QJsonObject>
#include <QList>

#include <optional>

// The stored form of entries: compact JSON, keys "id", "name", "url", then whichever of
// "logoURL", "groupTitle", "countryCode" are present; ids as upper-case hyphenated UUID text and
// addresses as their absolute text. Decoding is strict: a record without "id", "name" or "url",
// or with a value of the wrong kind (including an id that is no UUID or an address that is no
// valid address), fails, and so does the whole list that holds it. Unknown keys are ignored and
// an optional key holding null counts as absent.
class PlaylistJson
{
public:
    PlaylistJson() = delete;

    static QByteArray encode(const PlaylistEntry &entry);
    static QByteArray encode(const QList<PlaylistEntry> &entries);
    static void appendEncoded(QByteArray &out, const PlaylistEntry &entry);

    static std::optional<PlaylistEntry> decodeEntry(const QJsonObject &object);
    // Lists in the form this store writes are read straight from the bytes; anything else goes
    // through the general JSON reader (decodeDocument), which both give the same list for.
    // Progress is told of the bytes read for good, as StoredListScanner tells it.
    static std::optional<QList<PlaylistEntry>>
    decodeList(QByteArrayView json, const StoredListScanner::Progress &progress = {});
    static std::optional<QList<PlaylistEntry>> decodeDocument(const QByteArray &json);
};
