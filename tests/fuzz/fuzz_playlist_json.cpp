// Stored bytes either decode as a whole or not at all, and what decodes is written back to bytes
// that decode to the same list.
#include "FuzzCheck.h"
#include "Playlist/PlaylistJson.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const std::optional<QList<PlaylistEntry>> entries = PlaylistJson::decodeList(bytes);
    if (!entries)
        return 0;
    const QByteArray written = PlaylistJson::encode(*entries);
    FUZZ_CHECK(PlaylistJson::decodeList(written) == entries);
    FUZZ_CHECK(PlaylistJson::encode(*PlaylistJson::decodeList(written)) == written);
    return 0;
}
