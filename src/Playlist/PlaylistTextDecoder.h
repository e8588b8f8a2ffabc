#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

// Turns the bytes of a playlist file or download into text: UTF-8 when the bytes are valid UTF-8
// (a leading byte-order mark is dropped), otherwise ISO Latin-1. Latin-1 maps every byte to a
// character, so in practice the result is always present; nothing means
// PlaylistError::invalidEncoding.
class PlaylistTextDecoder
{
public:
    PlaylistTextDecoder() = delete;

    static std::optional<QString> decode(QByteArrayView bytes);
};
