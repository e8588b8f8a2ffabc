#include "Playlist/PlaylistTextSurvey.h"

#include "Playlist/EncodedText.h"

#include <bitset>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#include <utility>

namespace {

// The first bytes of media and archive files that are sometimes chosen or served in place of a
// playlist. Text never starts so.
constexpr std::pair<qsizetype, std::string_view> binarySignatures[] = {
    {4, "ftyp"},             // MP4, MOV, M4A, 3GP
    {0, "\x1A\x45\xDF\xA3"}, // Matroska, WebM
    {0, "ID3"},              // MP3
    {0, "RIFF"},             // AVI, WAV, WebP
    {0, "OggS"},             // Ogg
    {0, "fLaC"},             // FLAC
    {0, "FLV\x01"},          // Flash video
    {0, "\x30\x26\xB2\x75"}, // Windows Media
    {0, "PK\x03\x04"},       // ZIP and everything made of it
    {0, "\x1F\x8B"},         // gzip
    {0, "7z\xBC\xAF"},       // 7-Zip
    {0, "Rar!"},             // RAR
    {0, "BZh"},              // bzip2
    {0, "\xFD"
        "7zXZ"},         // xz
    {0, "%PDF"},         // PDF
    {0, "\x89PNG"},      // PNG
    {0, "\xFF\xD8\xFF"}, // JPEG
    {0, "GIF8"},         // GIF
    {0, "\x7F"
        "ELF"}, // programs
};

struct ByteCounts
{
    qint64 controls = 0; // control characters other than tab, line breaks and form feed
    bool hasNul = false;
};

bool isUnusualControl(unsigned char byte)
{
    return (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r' && byte != '\f') ||
           byte == 0x7F;
}

// Sixteen bytes at a time where SSE2 is there (every x86-64): the survey reads every byte of
// playlists of tens of megabytes.
ByteCounts countBytes(QByteArrayView block)
{
    ByteCounts counts;
    const char *p = block.data();
    const char *const end = p + block.size();
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    const __m128i lastControl = _mm_set1_epi8(0x1F);
    for (; end - p >= 16; p += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
        // Saturating subtraction is zero exactly where a byte is <= 0x1F.
        __m128i controls = _mm_cmpeq_epi8(_mm_subs_epu8(bytes, lastControl), zero);
        for (const char allowed : {'\t', '\n', '\r', '\f'})
            controls = _mm_andnot_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(allowed)), controls);
        controls = _mm_or_si128(controls, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(0x7F)));
        // Rare in text, so counted only where they are.
        if (const int mask = _mm_movemask_epi8(controls))
            counts.controls += std::bitset<16>(unsigned(mask)).count();
        counts.hasNul = counts.hasNul || _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, zero)) != 0;
    }
#endif
    for (; p != end; ++p) {
        counts.controls += isUnusualControl(static_cast<unsigned char>(*p));
        counts.hasNul = counts.hasNul || *p == 0;
    }
    return counts;
}

} // namespace

void PlaylistTextSurvey::add(QByteArrayView block)
{
    if (m_start.size() < startLength)
        m_start += block.first(std::min(block.size(), startLength - m_start.size()));
    m_size += block.size();
    const ByteCounts counts = countBytes(block);
    m_controls += counts.controls;
    m_hasNul = m_hasNul || counts.hasNul;
    // A block ends at an ASCII byte, never inside a UTF-8 sequence, so the whole is valid exactly
    // when every block is.
    m_validUtf8 = m_validUtf8 && block.isValidUtf8();
    EncodedText(PlaylistTextDecoder::Encoding::utf8)
        .forEachLine(block, [this](QByteArrayView line) {
            qsizetype i = 0;
            while (i < line.size() && (line[i] == ' ' || line[i] == '\t'))
                ++i;
            m_addressLineBound += i < line.size() && line[i] != '#';
        });
}

void PlaylistTextSurvey::append(const PlaylistTextSurvey &later)
{
    if (m_start.size() < startLength)
        m_start += QByteArrayView(later.m_start)
                       .first(std::min(later.m_start.size(), startLength - m_start.size()));
    m_size += later.m_size;
    m_controls += later.m_controls;
    m_hasNul = m_hasNul || later.m_hasNul;
    m_validUtf8 = m_validUtf8 && later.m_validUtf8;
    m_addressLineBound += later.m_addressLineBound;
}

bool PlaylistTextSurvey::isText() const
{
    for (const auto &[offset, signature] : binarySignatures) {
        const QByteArrayView expected(signature.data(), qsizetype(signature.size()));
        if (QByteArrayView(m_start).sliced(std::min(offset, m_start.size())).startsWith(expected))
            return false;
    }
    return !m_hasNul && m_controls * 100 <= m_size;
}

PlaylistTextDecoder::Encoding PlaylistTextSurvey::encoding() const
{
    return m_validUtf8 ? PlaylistTextDecoder::Encoding::utf8
                       : PlaylistTextDecoder::Encoding::windows1252;
}
