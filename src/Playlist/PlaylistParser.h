#pragma once

#include "Base/WebAddress.h"
#include "Playlist/PlaylistEntry.h"
#include "Playlist/StringPool.h"

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
    // The attributes a description line can carry. Each is looked up as a plain, case-insensitive
    // search for its name followed by ="; its first occurrence anywhere in the line decides
    // (so "country" also matches inside "tvg-country="). The value runs to the next double quote
    // and is trimmed; a missing attribute, one without a closing quote and a blank one have no
    // value. Single-quoted and unquoted values are not recognised. Views into the line.
    struct Attributes
    {
        std::optional<QStringView> tvgName;
        std::optional<QStringView> tvgLogo;
        std::optional<QStringView> groupTitle;
        std::optional<QStringView> tvgCountry;
        std::optional<QStringView> country;
        std::optional<QStringView> tvgID;
    };
    // All attributes in one pass over the line's double quotes.
    static Attributes attributes(QStringView line);
    // The first piece of a country list ("us;ca" gives US), if it is a code.
    static std::optional<QString> normalizedCountryCode(std::optional<QStringView> value,
                                                        StringPool &pool);
    // The country suffix of a channel id ("BBCOne.uk@HD" gives UK), if it is a code.
    static std::optional<QString> inferredCountryCode(std::optional<QStringView> channelID,
                                                      StringPool &pool);
    // The candidate upper-cased, if it is two characters long; shared through the pool.
    static std::optional<QString> countryCode(QStringView candidate, StringPool &pool);

    friend class PlaylistParserRun;
};
