#pragma once

#include "Playlist/PlaylistEntry.h"

#include <QList>
#include <QString>

// The channels read from a playlist, or why there are none.
struct PlaylistReadResult
{
    QList<PlaylistEntry> entries;
    QString failure; // the user-facing description; empty on success

    bool succeeded() const { return failure.isEmpty(); }
    static PlaylistReadResult failed(QString description) { return {{}, std::move(description)}; }
};
