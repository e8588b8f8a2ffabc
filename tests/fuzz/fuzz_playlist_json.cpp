// Stored bytes either decode as a whole or not at all, the fast reader of the written form never
// disagrees with the general JSON reader, and what decodes is written back to bytes that decode
// to the same list.
#include "FuzzCheck.h"
#include "Playlist/PlaylistJson.h"
#include "Playlist/StoredListScanner.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    if (const std::optional<QList<PlaylistEntry>> scanned = StoredListScanner::scan(bytes))
        FUZZ_CHECK(PlaylistJson::decodeDocument(bytes) == scanned);
    const std::optional<QList<PlaylistEntry>> entries = PlaylistJson::decodeList(bytes);
    if (!entries)
        return 0;
    const QByteArray written = PlaylistJson::encode(*entries);
    // The fast reader may leave a list to the general one (a lone surrogate), never misread it.
    if (const std::optional<QList<PlaylistEntry>> again = StoredListScanner::scan(written))
        FUZZ_CHECK(again == entries);
    FUZZ_CHECK(PlaylistJson::decodeDocument(written) == entries);
    FUZZ_CHECK(PlaylistJson::encode(*PlaylistJson::decodeList(written)) == written);
    return 0;
}
