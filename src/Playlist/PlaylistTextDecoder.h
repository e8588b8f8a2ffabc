#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

// Turns the bytes of a playlist file or download into text: UTF-8 when the bytes are valid UTF-8
// (a leading byte-order mark is dropped), otherwise Windows-1252, the encoding of legacy lists
// (their en dashes, curly quotes and letters such as "š" live in 0x80-0x9F, where ISO Latin-1 has
// only control characters). Every byte maps to a character, so in practice the result is always
// present; nothing means PlaylistError::invalidEncoding.
class PlaylistTextDecoder
{
public:
    PlaylistTextDecoder() = delete;

    static std::optional<QString> decode(QByteArrayView bytes);
};
