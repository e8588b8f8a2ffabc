// Any typed text gets one classification; recognised web videos have identifiers that are never
// empty, and an OK.ru embed address names the same video again.
#include "FuzzCheck.h"
#include "Player/RemoteAddress.h"

#include <QString>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    const RemoteTarget target = RemoteAddress::classify(text);
    switch (target.kind) {
    case RemoteTarget::Kind::youtube:
        FUZZ_CHECK(target.youtube->videoID() || target.youtube->playlistID());
        FUZZ_CHECK(!target.youtube->videoID().value_or(u"x"_qs).isEmpty());
        FUZZ_CHECK(!target.youtube->playlistID().value_or(u"x"_qs).isEmpty());
        break;
    case RemoteTarget::Kind::okVideo:
        FUZZ_CHECK(!target.okVideo->videoID().isEmpty());
        FUZZ_CHECK(OKVideoContent::fromUrl(target.okVideo->embedURL()) == target.okVideo);
        break;
    case RemoteTarget::Kind::invalid:
        FUZZ_CHECK(target.url.isNull());
        break;
    case RemoteTarget::Kind::playlist:
    case RemoteTarget::Kind::stream:
        FUZZ_CHECK(WebAddress::fromText(target.url.text()) == target.url);
        break;
    }
    return 0;
}
