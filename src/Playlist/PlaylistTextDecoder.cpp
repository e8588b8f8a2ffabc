#include "Playlist/PlaylistTextDecoder.h"

#include <QStringDecoder>

namespace {

// Windows-1252 where it differs from ISO Latin-1: the bytes 0x80 to 0x9F. The five bytes it
// leaves undefined keep their Latin-1 meaning, as browsers decode text labelled Latin-1.
constexpr char16_t windows1252High[32] = {
    u'\u20AC', u'\u0081', u'\u201A', u'\u0192', u'\u201E', u'\u2026', u'\u2020', u'\u2021',
    u'\u02C6', u'\u2030', u'\u0160', u'\u2039', u'\u0152', u'\u008D', u'\u017D', u'\u008F',
    u'\u0090', u'\u2018', u'\u2019', u'\u201C', u'\u201D', u'\u2022', u'\u2013', u'\u2014',
    u'\u02DC', u'\u2122', u'\u0161', u'\u203A', u'\u0153', u'\u009D', u'\u017E', u'\u0178'};

QString fromWindows1252(QByteArrayView bytes)
{
    QString text(bytes.size(), Qt::Uninitialized);
    char16_t *out = reinterpret_cast<char16_t *>(text.data());
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        *out++ = value >= 0x80 && value < 0xA0 ? windows1252High[value - 0x80] : char16_t(value);
    }
    return text;
}

} // namespace

std::optional<QString> PlaylistTextDecoder::decode(QByteArrayView bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (!utf8.hasError())
        return text;
    return fromWindows1252(bytes);
}
