#pragma once

#include <QStringView>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// Searches in UTF-16 text that the parser runs over every character of a playlist. Where SSE2 is
// there (every x86-64), eight code units are tested at once; elsewhere a plain loop does the same.
class CharScan
{
public:
    CharScan() = delete;

    // The first code unit in [from, end) that may be a line break (a unit up to carriage
    // return, or from U+0085 on), or end. The caller decides what it really is.
    static const char16_t *nextLineBreakCandidate(const char16_t *from, const char16_t *end)
    {
#if defined(__SSE2__)
        const __m128i lastControl = _mm_set1_epi16(0x0D);
        const __m128i belowNextLine = _mm_set1_epi16(0x84);
        const __m128i zero = _mm_setzero_si128();
        for (; end - from >= 8; from += 8) {
            const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
            // Saturating subtraction is zero exactly where units <= 0x0D, and where units >= 0x85.
            const __m128i low = _mm_cmpeq_epi16(_mm_subs_epu16(units, lastControl), zero);
            const __m128i high = _mm_cmpeq_epi16(_mm_subs_epu16(belowNextLine, units), zero);
            const int mask = _mm_movemask_epi8(_mm_or_si128(low, high));
            if (mask != 0)
                return from + __builtin_ctz(unsigned(mask)) / 2;
        }
#endif
        for (; from != end; ++from) {
            if (*from <= 0x0D || *from >= 0x85)
                return from;
        }
        return end;
    }

    // Index of c in text at or after from, or -1.
    static qsizetype indexOf(QStringView text, char16_t c, qsizetype from = 0)
    {
        const char16_t *const begin = text.utf16();
        const char16_t *const end = begin + text.size();
        const char16_t *p = begin + from;
#if defined(__SSE2__)
        const __m128i wanted = _mm_set1_epi16(short(c));
        for (; end - p >= 8; p += 8) {
            const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
            const int mask = _mm_movemask_epi8(_mm_cmpeq_epi16(units, wanted));
            if (mask != 0)
                return p - begin + __builtin_ctz(unsigned(mask)) / 2;
        }
#endif
        for (; p != end; ++p) {
            if (*p == c)
                return p - begin;
        }
        return -1;
    }
};
