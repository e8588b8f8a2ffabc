#pragma once

#include "Base/WebAddress.h"

#include <QString>

#include <optional>

// An OK.ru video. Its identifier is never empty and holds only Unicode letters, marks and digits,
// "_" and "-", so the embed address built from it is always valid.
class OKVideoContent
{
public:
    // Recognises the OK.ru host and its subdomains with a "video", "videoembed" or "live" path
    // component followed by a well-formed identifier; nothing for any other address.
    static std::optional<OKVideoContent> fromUrl(const WebAddress &url);

    const QString &videoID() const { return m_videoID; }
    const QString &id() const { return m_videoID; }
    // https://ok.ru/videoembed/<id>?autoplay=1&nochat=1
    WebAddress embedURL() const;

    friend bool operator==(const OKVideoContent &, const OKVideoContent &) = default;

private:
    explicit OKVideoContent(QString videoID) : m_videoID(std::move(videoID)) {}

    QString m_videoID;
};
