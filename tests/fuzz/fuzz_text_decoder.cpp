// Any bytes decode to text: UTF-8 exactly, or one character for each byte.
#include "FuzzCheck.h"
#include "Playlist/PlaylistTextDecoder.h"

#include <QStringDecoder>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const std::optional<QString> text = PlaylistTextDecoder::decode(bytes);
    FUZZ_CHECK(text.has_value());
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString asUtf8 = utf8.decode(bytes);
    FUZZ_CHECK(utf8.hasError() ? text->size() == bytes.size() : *text == asUtf8);
    return 0;
}
