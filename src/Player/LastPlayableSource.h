#pragma once

#include "Base/WebAddress.h"
#include "Web/OKVideoContent.h"
#include "Web/YouTubeContent.h"

#include <QString>

#include <variant>

// What Play starts again when nothing is loaded: the last file or stream, YouTube content or
// OK.ru video that was started, with the title it was shown under.
struct LastPlayableSource
{
    struct Media
    {
        WebAddress url;
        QString title;
        bool isLiveStream = false;
        friend bool operator==(const Media &, const Media &) = default;
    };
    struct YouTube
    {
        YouTubeContent content;
        QString title;
        friend bool operator==(const YouTube &, const YouTube &) = default;
    };
    struct OKVideo
    {
        OKVideoContent content;
        QString title;
        friend bool operator==(const OKVideo &, const OKVideo &) = default;
    };

    std::variant<Media, YouTube, OKVideo> source;
    friend bool operator==(const LastPlayableSource &, const LastPlayableSource &) = default;
};
