#include "Player/RemoteAddress.h"

QString RemoteAddress::normalizedRemoteAddress(QStringView text)
{
    QStringView address = text.trimmed();
    if (address.contains(u"](") && address.endsWith(u')')) {
        const qsizetype start = address.indexOf(u"](") + 2;
        address = address.sliced(start, address.size() - 1 - start);
    }
    if (address.size() >= 3 && address.startsWith(u'<') && address.endsWith(u'>'))
        address = address.sliced(1, address.size() - 2);
    return address.trimmed().toString();
}

bool RemoteAddress::isIPTVPlaylistURL(const WebAddress &url)
{
    if (url.pathExtension().toLower() == u"m3u")
        return true;
    for (const WebAddress::QueryItem &item : url.queryItems()) {
        const QString pair = (item.name + u'=' + item.value.value_or(QString())).toLower();
        if (pair.contains(u"type=m3u") || pair.contains(u"format=m3u") ||
            pair.contains(u"output=m3u"))
            return true;
    }
    return false;
}

RemoteTarget RemoteAddress::classify(QStringView text)
{
    const std::optional<WebAddress> url = WebAddress::fromText(normalizedRemoteAddress(text));
    if (!url || !url->isWebAddress())
        return {};
    if (auto youtube = YouTubeContent::fromUrl(*url))
        return {RemoteTarget::Kind::youtube, *url, std::move(youtube), {}, false};
    if (auto okVideo = OKVideoContent::fromUrl(*url))
        return {RemoteTarget::Kind::okVideo, *url, {}, std::move(okVideo), false};
    if (isIPTVPlaylistURL(*url))
        return {RemoteTarget::Kind::playlist, *url, {}, {}, false};
    const bool live = url->pathExtension().toLower() == u"m3u8";
    return {RemoteTarget::Kind::stream, *url, {}, {}, live};
}
