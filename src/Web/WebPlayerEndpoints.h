#pragma once

#include "Web/OKVideoContent.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

// Where the web players come from: the product's own https origin that our YouTube page claims,
// the address of YouTube's iframe API script, and the OK.ru host that embed pages load from.
// Users always get standard(); tests put a local server in their place.
struct WebPlayerEndpoints
{
    QString pageOrigin;       // scheme and host, no trailing "/"
    QString youTubeIframeApi; // absolute address of the script
    QString okVideoHost;      // host, optionally with ":port"

    static WebPlayerEndpoints standard();

    // The page origin followed by "/": the base address of our YouTube page.
    QUrl pageBaseURL() const;
    // The embed address of the video with the OK.ru host in place.
    QUrl okVideoEmbedURL(const OKVideoContent &content) const;
    // "https://" + OK.ru host + "/": who the embed page is told sent the viewer.
    QByteArray okVideoReferer() const;
};
