#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>

// Turns the bytes of a playlist file or download into text: UTF-8 when the bytes are valid UTF-8
// (a leading byte-order mark is dropped), otherwise Windows-1252, the encoding of legacy lists
// (their en dashes, curly quotes and letters such as "š" live in 0x80-0x9F, where ISO Latin-1 has
// only control characters). Every byte maps to a character, so in practice the result is always
// present; nothing means PlaylistError::invalidEncoding.
//
// The encoding is decided once for the whole text, so the parser can read the bytes in place and
// convert only the pieces it keeps, each exactly as the whole decoded text would have them.
class PlaylistTextDecoder
{
public:
    enum class Encoding
    {
        utf8,
        windows1252
    };

    PlaylistTextDecoder() = delete;

    static std::optional<QString> decode(QByteArrayView bytes);

    static Encoding encodingOf(QByteArrayView bytes);
    // The bytes that hold text: without the byte-order mark of UTF-8.
    static QByteArrayView textBytes(QByteArrayView bytes, Encoding encoding);
    // A piece of text bytes of that encoding (whole UTF-8 sequences) as characters.
    static QString toString(QByteArrayView piece, Encoding encoding);

    // The character a byte stands for in Windows-1252. The five bytes it leaves undefined keep
    // their Latin-1 meaning, as browsers decode text labelled Latin-1.
    static constexpr char16_t windows1252Character(unsigned char byte)
    {
        return byte >= 0x80 && byte < 0xA0 ? windows1252High[byte - 0x80] : char16_t(byte);
    }

private:
    // Where Windows-1252 differs from ISO Latin-1: the bytes 0x80 to 0x9F.
    static constexpr char16_t windows1252High[32] = {
        u'\u20AC', u'\u0081', u'\u201A', u'\u0192', u'\u201E', u'\u2026', u'\u2020', u'\u2021',
        u'\u02C6', u'\u2030', u'\u0160', u'\u2039', u'\u0152', u'\u008D', u'\u017D', u'\u008F',
        u'\u0090', u'\u2018', u'\u2019', u'\u201C', u'\u201D', u'\u2022', u'\u2013', u'\u2014',
        u'\u02DC', u'\u2122', u'\u0161', u'\u203A', u'\u0153', u'\u009D', u'\u017E', u'\u0178'};
};
