#pragma once

#include "Base/WebAddress.h"
#include "Playlist/ChannelGuideKeys.h"
#include "Playlist/PlaylistEntry.h"

#include <QList>
#include <QString>

// The channels read from a playlist, or why there are none.
struct PlaylistReadResult
{
    QList<PlaylistEntry> entries;
    QString failure; // the user-facing description; empty on success
    // For each entry, how a programme guide may know it.
    ChannelGuideKeys guideKeys;
    // The programme guides the playlist's header names.
    QList<WebAddress> guideAddresses;

    bool succeeded() const { return failure.isEmpty(); }
    static PlaylistReadResult failed(QString description)
    {
        return {{}, std::move(description), {}, {}};
    }
};
