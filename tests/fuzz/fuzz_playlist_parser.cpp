// Any text parses without a crash, hang or runaway memory, into channels whose addresses read back
// as themselves.
#include "FuzzCheck.h"
#include "Playlist/PlaylistParser.h"

#include <QString>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const WebAddress base = *WebAddress::fromText(u"http://h/lists/index.m3u");
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    for (const PlaylistEntry &entry : PlaylistParser::parse(text, base)) {
        FUZZ_CHECK(!entry.name.isEmpty());
        FUZZ_CHECK(WebAddress::fromText(entry.url.text()) == entry.url);
        if (entry.logoURL)
            FUZZ_CHECK(WebAddress::fromText(entry.logoURL->text()) == entry.logoURL);
    }
    return 0;
}
