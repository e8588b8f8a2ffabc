#pragma once

#include "Base/WebAddress.h"
#include "Web/OKVideoContent.h"
#include "Web/YouTubeContent.h"

#include <optional>

// What an address typed into the network panel names, decided in a fixed order: a YouTube video or
// playlist, an OK.ru video, an IPTV playlist, otherwise a direct stream.
struct RemoteTarget
{
    enum class Kind
    {
        invalid, // not an http or https address
        youtube,
        okVideo,
        playlist,
        stream,
    };

    Kind kind = Kind::invalid;
    WebAddress url;                        // the normalised address (null when invalid)
    std::optional<YouTubeContent> youtube; // with Kind::youtube
    std::optional<OKVideoContent> okVideo; // with Kind::okVideo
    bool isLiveStream = false;             // with Kind::stream: an HLS ".m3u8" address
};
