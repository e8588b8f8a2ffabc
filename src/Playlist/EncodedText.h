#pragma once

#include "Playlist/PlaylistTextDecoder.h"

#include <QByteArrayView>
#include <QChar>
#include <QString>

#include <optional>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Text read in place from its bytes: the lines, white space and pieces that the decoded text would
// have, found without decoding it. A playlist of tens of megabytes is thus never held a second
// time as UTF-16; only the pieces kept are converted. UTF-8 bytes must be valid.
class EncodedText
{
public:
    using Encoding = PlaylistTextDecoder::Encoding;

    explicit EncodedText(Encoding encoding) : m_encoding(encoding) {}

    // Calls readLine with each line, in order. Lines end at the characters the platform takes for
    // newlines: line feed, vertical tab, form feed, carriage return, next line and the line and
    // paragraph separators (the last three exist in UTF-8 only: Windows-1252 has no byte for them).
    template <typename ReadLine>
    void forEachLine(QByteArrayView bytes, ReadLine &&readLine) const
    {
        const char *const end = bytes.data() + bytes.size();
        const char *lineStart = bytes.data();
        for (const char *c = nextLineBreakCandidate(lineStart, end); c != end;
             c = nextLineBreakCandidate(c + 1, end)) {
            if (const qsizetype length = lineBreakLength(c, end)) {
                readLine(QByteArrayView(lineStart, c));
                c += length - 1;
                lineStart = c + 1;
            }
        }
        readLine(QByteArrayView(lineStart, end));
    }

    // Without the white space (as QChar::isSpace decides) at the start, at both ends.
    QByteArrayView leftTrimmed(QByteArrayView text) const
    {
        qsizetype length = 0;
        while (!text.isEmpty() && isSpaceAtFront(text, length))
            text = text.sliced(length);
        return text;
    }
    QByteArrayView trimmed(QByteArrayView text) const
    {
        text = leftTrimmed(text);
        qsizetype length = 0;
        while (!text.isEmpty() && isSpaceAtBack(text, length))
            text.chop(length);
        return text;
    }

    QString toString(QByteArrayView piece) const
    {
        return PlaylistTextDecoder::toString(piece, m_encoding);
    }

private:
    static bool isAsciiSpace(unsigned char byte)
    {
        return byte == ' ' || (byte >= 0x09 && byte <= 0x0D);
    }

    // The first byte in [from, end) that may begin a line break, or end: a byte up to carriage
    // return, or in UTF-8 the lead byte of next line (C2) or of the separators (E2). Sixteen bytes
    // are tested at once where SSE2 is there (every x86-64).
    const char *nextLineBreakCandidate(const char *from, const char *end) const
    {
        const bool utf8 = m_encoding == Encoding::utf8;
#if defined(__SSE2__)
        const __m128i lastControl = _mm_set1_epi8(0x0D);
        const __m128i nextLineLead = _mm_set1_epi8(utf8 ? char(0xC2) : 0);
        const __m128i separatorLead = _mm_set1_epi8(utf8 ? char(0xE2) : 0);
        const __m128i zero = _mm_setzero_si128();
        for (; end - from >= 16; from += 16) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
            // Saturating subtraction is zero exactly where a byte is <= 0x0D.
            const __m128i control = _mm_cmpeq_epi8(_mm_subs_epu8(bytes, lastControl), zero);
            const __m128i lead = _mm_or_si128(_mm_cmpeq_epi8(bytes, nextLineLead),
                                              _mm_cmpeq_epi8(bytes, separatorLead));
            const int mask = _mm_movemask_epi8(_mm_or_si128(control, lead));
            if (mask != 0)
                return from + __builtin_ctz(unsigned(mask));
        }
#endif
        for (; from != end; ++from) {
            const auto byte = static_cast<unsigned char>(*from);
            if (byte <= 0x0D || (utf8 && (byte == 0xC2 || byte == 0xE2)))
                return from;
        }
        return end;
    }

    // The length in bytes of the line break at c, or 0 when there is none.
    qsizetype lineBreakLength(const char *c, const char *end) const
    {
        const auto byte = static_cast<unsigned char>(c[0]);
        if (byte >= 0x0A && byte <= 0x0D)
            return 1;
        if (m_encoding != Encoding::utf8)
            return 0;
        const auto at = [c, end](qsizetype i) {
            return c + i < end ? static_cast<unsigned char>(c[i]) : 0;
        };
        if (byte == 0xC2 && at(1) == 0x85)
            return 2;
        if (byte == 0xE2 && at(1) == 0x80 && (at(2) == 0xA8 || at(2) == 0xA9))
            return 3;
        return 0;
    }

    // Whether the byte is white space, when it is a character by itself: an ASCII byte, or any
    // byte of Windows-1252. Nothing for a byte of a longer UTF-8 sequence.
    std::optional<bool> isSpaceByte(char byte) const
    {
        const auto value = static_cast<unsigned char>(byte);
        if (value < 0x80)
            return isAsciiSpace(value);
        if (m_encoding != Encoding::utf8)
            return QChar::isSpace(char32_t(PlaylistTextDecoder::windows1252Character(value)));
        return std::nullopt;
    }

    // Whether the character at the front (back) of text is white space; length is set to its size
    // in bytes.
    bool isSpaceAtFront(QByteArrayView text, qsizetype &length) const
    {
        length = 1;
        if (const std::optional<bool> space = isSpaceByte(text.front()))
            return *space;
        const auto lead = static_cast<unsigned char>(text.front());
        length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
        return length <= text.size() && QChar::isSpace(codePoint(text.first(length)));
    }
    bool isSpaceAtBack(QByteArrayView text, qsizetype &length) const
    {
        length = 1;
        if (const std::optional<bool> space = isSpaceByte(text.back()))
            return *space;
        while (length < text.size() && length < 4 &&
               (static_cast<unsigned char>(text[text.size() - length]) & 0xC0) == 0x80)
            ++length;
        return QChar::isSpace(codePoint(text.last(length)));
    }

    // The code point of one whole, valid UTF-8 sequence of two to four bytes.
    static char32_t codePoint(QByteArrayView sequence)
    {
        const auto byte = [sequence](qsizetype i) {
            return char32_t(static_cast<unsigned char>(sequence[i]));
        };
        char32_t value = byte(0) & (0x7F >> sequence.size());
        for (qsizetype i = 1; i < sequence.size(); ++i)
            value = (value << 6) | (byte(i) & 0x3F);
        return value;
    }

    Encoding m_encoding;
};
