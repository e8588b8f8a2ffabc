#pragma once

#include "Base/WebAddress.h"

#include <QString>
#include <QUuid>

#include <optional>

// One playable channel or saved link: a channel of a network playlist, a saved link, and a line
// pair of an exported file are all this record. Equality covers every field, id included.
struct PlaylistEntry
{
    QUuid id;
    QString name;
    WebAddress url; // absolute
    std::optional<WebAddress> logoURL;
    std::optional<QString> groupTitle;
    std::optional<QString> countryCode; // upper-case, two characters

    friend bool operator==(const PlaylistEntry &, const PlaylistEntry &) = default;
};

// Entries move by plain memory copies when a list of millions of them grows.
Q_DECLARE_TYPEINFO(PlaylistEntry, Q_RELOCATABLE_TYPE);

size_t qHash(const PlaylistEntry &entry, size_t seed = 0);
