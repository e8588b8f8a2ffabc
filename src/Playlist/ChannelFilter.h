#pragma once

#include "Playlist/PlaylistEntry.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// What narrows a channel list: the search text and the chosen country and category.
struct ChannelFilterCriteria
{
    QString search;
    std::optional<QString> countryCode; // none: all countries
    std::optional<QString> category;    // none: all categories

    friend bool operator==(const ChannelFilterCriteria &, const ChannelFilterCriteria &) = default;
};

// The rules of the channel lists: which entries a filter keeps, the choices of the country and
// category menus, and the metadata line of a row. ChannelSearchIndex gives the same answers
// faster for long lists.
class ChannelFilter
{
public:
    ChannelFilter() = delete;

    // The search text without surrounding white space; empty means no search.
    static QString query(const QString &search);
    // Country and category must match exactly when chosen. A non-empty query must occur in the
    // name, or else in the group, ignoring letter case but not accents.
    static bool matches(const PlaylistEntry &entry, const ChannelFilterCriteria &criteria);
    static QList<PlaylistEntry> filtered(const QList<PlaylistEntry> &entries,
                                         const ChannelFilterCriteria &criteria);

    // The distinct country codes (empty ones included), ordered by their English names.
    static QStringList countryCodes(const QList<PlaylistEntry> &entries);
    // The distinct non-empty groups, ordered by their text.
    static QStringList categories(const QList<PlaylistEntry> &entries);
    // Sorts by the user's collation, ignoring letter case; equal keys keep their order.
    static void sortLocalized(QStringList &texts, const QStringList &keys);

    // A row of a network playlist: "Germany  ·  Sport", "Sport", "Germany" or "Other".
    static QString networkRowMetadata(const PlaylistEntry &entry);
    // A saved link's row: like a network row, except that without a country nor a group there is
    // no line at all.
    static std::optional<QString> savedLinkMetadata(const PlaylistEntry &entry);
};
