#include "Playlist/PlaylistTextDecoder.h"

namespace {

constexpr QByteArrayView byteOrderMark("\xEF\xBB\xBF");

} // namespace

std::optional<QString> PlaylistTextDecoder::decode(QByteArrayView bytes)
{
    const Encoding encoding = encodingOf(bytes);
    return toString(textBytes(bytes, encoding), encoding);
}

PlaylistTextDecoder::Encoding PlaylistTextDecoder::encodingOf(QByteArrayView bytes)
{
    return bytes.isValidUtf8() ? Encoding::utf8 : Encoding::windows1252;
}

QByteArrayView PlaylistTextDecoder::textBytes(QByteArrayView bytes, Encoding encoding)
{
    return encoding == Encoding::utf8 && bytes.startsWith(byteOrderMark)
               ? bytes.sliced(byteOrderMark.size())
               : bytes;
}

QString PlaylistTextDecoder::toString(QByteArrayView piece, Encoding encoding)
{
    if (encoding == Encoding::utf8) {
        // QString::fromUtf8 drops a leading byte-order mark, which inside the text is a character.
        qsizetype marks = 0;
        while (piece.sliced(marks * byteOrderMark.size()).startsWith(byteOrderMark))
            ++marks;
        const QString text = QString::fromUtf8(piece.sliced(marks * byteOrderMark.size()));
        return marks == 0 ? text : QString(marks, QChar(0xFEFF)) + text;
    }
    QString text(piece.size(), Qt::Uninitialized);
    char16_t *out = reinterpret_cast<char16_t *>(text.data());
    for (const char byte : piece)
        *out++ = windows1252Character(static_cast<unsigned char>(byte));
    return text;
}
