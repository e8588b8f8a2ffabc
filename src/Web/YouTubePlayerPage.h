#pragma once

#include "Web/WebPlayerEndpoints.h"
#include "Web/YouTubeContent.h"

#include <QString>

#include <optional>

// The HTML page that plays YouTube content through YouTube's iframe API. It is our own page, so
// it defines the velm… functions that the script commands call.
class YouTubePlayerPage
{
public:
    YouTubePlayerPage() = delete;

    // A value as a script literal: "null" when absent, else one JSON string ("/" written as
    // "\/"), so no identifier can end the script element or the string early.
    static QString javascriptString(const std::optional<QString> &value);
    // The whole page for the content: the video within the playlist when both are named, the
    // playlist from its start, or the single video.
    static QString html(const YouTubeContent &content, const WebPlayerEndpoints &endpoints);
};
