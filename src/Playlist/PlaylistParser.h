#pragma once

#include "Playlist/PlaylistEntry.h"
#include "Web/WebAddress.h"

#include <QList>
#include <QStringView>

#include <optional>

// Reads M3U / M3U8 playlist text into channels. Pure and re-entrant: it never fails (bad lines are
// skipped; callers judge an empty result) and runs in one pass over the text, so it may be called
// from any thread on playlists of millions of lines.
class PlaylistParser
{
public:
    PlaylistParser() = delete;

    // The channels in the order in which their address lines stand in the text. Relative address
    // lines resolve against base (the playlist's own address or file address).
    static QList<PlaylistEntry> parse(QStringView text, const WebAddress &base);

private:
    // The value of a double-quoted attribute of a description line, trimmed; nothing when the
    // attribute is missing, unquoted, unclosed or blank. Views into line.
    static std::optional<QStringView> attribute(QLatin1StringView name, QStringView line);
    static std::optional<QString> inferredCountryCode(std::optional<QStringView> channelID);
    static std::optional<QString> normalizedCountryCode(std::optional<QStringView> value);
    static std::optional<QString> countryCode(QStringView candidate);

    friend class PlaylistParserRun;
};
