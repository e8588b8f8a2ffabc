#pragma once

#include "Base/WebAddress.h"

#include <QString>

#include <optional>

// A YouTube video, playlist, or both, as named by an address. At least one is present, and a
// present identifier is trimmed and never empty. Identifiers are not validated further: the
// player page decides what plays.
class YouTubeContent
{
public:
    // Recognises short links, the main host and its subdomains, and the privacy-enhanced host;
    // nothing for any other address.
    static std::optional<YouTubeContent> fromUrl(const WebAddress &url);

    const std::optional<QString> &videoID() const { return m_videoID; }
    const std::optional<QString> &playlistID() const { return m_playlistID; }
    // "video|playlist", each side empty when absent: the identity that decides a page reload.
    QString id() const;

    friend bool operator==(const YouTubeContent &, const YouTubeContent &) = default;

private:
    YouTubeContent(std::optional<QString> videoID, std::optional<QString> playlistID);

    std::optional<QString> m_videoID;
    std::optional<QString> m_playlistID;
};
