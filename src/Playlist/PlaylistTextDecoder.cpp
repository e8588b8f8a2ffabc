#include "Playlist/PlaylistTextDecoder.h"

#include <QStringDecoder>

std::optional<QString> PlaylistTextDecoder::decode(QByteArrayView bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (!utf8.hasError())
        return text;
    return QString::fromLatin1(bytes);
}
