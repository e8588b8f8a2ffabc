#pragma once

#include "Playlist/PlaylistEntry.h"

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QString>

#include <optional>

// The saved links written as an M3U file: "#EXTM3U", then per entry an "#EXTINF:-1" line with
// tvg-name and whichever of tvg-logo, tvg-country and group-title the entry has, then its address
// (a plain path for a local file). Quotes become apostrophes and line breaks spaces, so every
// value stays inside its quotes and on its line.
class M3UExport
{
public:
    M3UExport() = delete;

    static QString cleaned(const QString &value);
    static QByteArray text(const QList<PlaylistEntry> &entries);
    // "VelmPlayerPro 2026-11-16.m3u" for that day.
    static QString defaultFileName(QDate day);
    // Writes the text to a temporary file beside the target that then replaces it, so the target
    // is either the old file or the whole new one. Returns the reason of a failure.
    static std::optional<QString> write(const QString &path, const QList<PlaylistEntry> &entries);
};
