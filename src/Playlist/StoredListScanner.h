#pragma once

#include "Playlist/PlaylistEntry.h"

#include <QByteArrayView>
#include <QList>

#include <functional>
#include <optional>

// Reads saved links in the form the store itself writes, straight from the bytes: one array of
// objects whose keys are "id", "name", "url", "logoURL", "groupTitle" and "countryCode", each at
// most once and each holding a string, with JSON white space anywhere between tokens.
//
// This is the fast way in for a list of a million links: no document tree is built, only the
// fields an entry keeps are made, and equal groups and countries share one string. Anything else
// (another key, a null, a number, invalid UTF-8, a surrogate escape without its other half, a
// byte-order mark before the array, a record that does not decode) gives nothing, and the caller
// then reads the bytes with the general JSON reader, which decides. Whenever a list comes back it
// is the list the general reader gives for the same bytes.
class StoredListScanner
{
public:
    StoredListScanner() = delete;

    // Told, now and then, how many leading bytes have been read for good, so that a caller that
    // mapped the text can give those pages back while the rest is read.
    using Progress = std::function<void(qsizetype doneBytes)>;

    static std::optional<QList<PlaylistEntry>> scan(QByteArrayView json,
                                                    const Progress &progress = {});
};
