#pragma once

#include "Base/WebAddress.h"
#include "Playlist/EncodedText.h"
#include "Playlist/PlaylistEntry.h"
#include "Playlist/PlaylistTextSurvey.h"
#include "Playlist/StringPool.h"

#include <QByteArrayView>
#include <QList>

#include <optional>

// Reads M3U / M3U8 playlists into channels. Pure and re-entrant: it never fails (bad lines are
// skipped; callers judge an empty result) and reads the bytes in place, decoding only what the
// channels keep, so it may be called from any thread on playlists of millions of lines.
class PlaylistParser
{
public:
    PlaylistParser() = delete;

    // The channels in the order in which their address lines stand in the text that
    // PlaylistTextDecoder makes of the bytes. Relative address lines resolve against base (the
    // playlist's own address or file address).
    static QList<PlaylistEntry> parse(QByteArrayView bytes, const WebAddress &base);
    // The same, for bytes whose survey the caller has already taken.
    static QList<PlaylistEntry> parse(QByteArrayView bytes, const WebAddress &base,
                                      const PlaylistTextSurvey &survey);

private:
    // The attributes a description line can carry. Each is looked up as a plain, case-insensitive
    // search for its name followed by ="; its first occurrence anywhere in the line decides
    // (so "country" also matches inside "tvg-country="). The value runs to the next double quote
    // and is trimmed; a missing attribute, one without a closing quote and a blank one have no
    // value. Single-quoted and unquoted values are not recognised. Views into the line.
    struct Attributes
    {
        std::optional<QByteArrayView> tvgName;
        std::optional<QByteArrayView> tvgLogo;
        std::optional<QByteArrayView> groupTitle;
        std::optional<QByteArrayView> tvgCountry;
        std::optional<QByteArrayView> country;
        std::optional<QByteArrayView> tvgID;
    };
    // All attributes in one pass over the line's double quotes.
    static Attributes attributes(QByteArrayView line, const EncodedText &text);
    // The first piece of a country list ("us;ca" gives US), if it is a code.
    static std::optional<QString> normalizedCountryCode(std::optional<QByteArrayView> value,
                                                        const EncodedText &text, StringPool &pool);
    // The country suffix of a channel id ("BBCOne.uk@HD" gives UK), if it is a code.
    static std::optional<QString> inferredCountryCode(std::optional<QByteArrayView> channelID,
                                                      const EncodedText &text, StringPool &pool);
    // The candidate upper-cased, if it is two characters long; shared through the pool.
    static std::optional<QString> countryCode(QByteArrayView candidate, const EncodedText &text,
                                              StringPool &pool);

    friend class PlaylistParserRun;
};
