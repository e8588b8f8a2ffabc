// Any bytes parse without a crash, hang or runaway memory, into channels whose addresses read
// back as themselves, and into the channels their whole decoded text gives.
#include "FuzzCheck.h"
#include "Playlist/PlaylistParser.h"
#include "Playlist/PlaylistTextDecoder.h"

#include <QString>

namespace {

bool sameChannels(const QList<PlaylistEntry> &a, const QList<PlaylistEntry> &b)
{
    if (a.size() != b.size())
        return false;
    for (qsizetype i = 0; i < a.size(); ++i) {
        if (a[i].name != b[i].name || a[i].url != b[i].url || a[i].logoURL != b[i].logoURL ||
            a[i].groupTitle != b[i].groupTitle || a[i].countryCode != b[i].countryCode)
            return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const WebAddress base = *WebAddress::fromText(u"http://h/lists/index.m3u");
    const QByteArrayView bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const QList<PlaylistEntry> entries = PlaylistParser::parse(bytes, base);
    for (const PlaylistEntry &entry : entries) {
        FUZZ_CHECK(!entry.name.isEmpty());
        FUZZ_CHECK(WebAddress::fromText(entry.url.text()) == entry.url);
        if (entry.logoURL)
            FUZZ_CHECK(WebAddress::fromText(entry.logoURL->text()) == entry.logoURL);
    }
    // As UTF-8 behind a byte-order mark of its own, which the parser drops, so that a mark
    // starting the decoded text stays a character.
    const QByteArray decoded =
        "\xEF\xBB\xBF" + PlaylistTextDecoder::decode(bytes).value_or(QString()).toUtf8();
    FUZZ_CHECK(sameChannels(entries, PlaylistParser::parse(decoded, base)));
    return 0;
}
