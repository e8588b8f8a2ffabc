#include "Web/YouTubeContent.h"

#include "Base/OptionalText.h"

#include "Web/WebVideoHosts.h"

namespace {

enum class HostForm
{
    shortLink,
    main,
};

std::optional<HostForm> hostForm(const WebAddress &url)
{
    const std::optional<QString> host = url.host();
    if (!host)
        return std::nullopt;
    const QString lower = host->toLower();
    if (lower == WebVideoHosts::youTubeShortLink)
        return HostForm::shortLink;
    if (WebVideoHosts::isHostOrSubdomain(lower, WebVideoHosts::youTubeMain) ||
        WebVideoHosts::isHostOrSubdomain(lower, WebVideoHosts::youTubePrivacyEnhanced))
        return HostForm::main;
    return std::nullopt;
}

// The value of the first item with that exact name; later items of the same name never count.
std::optional<QString> firstQueryValue(const QList<WebAddress::QueryItem> &items, QStringView name)
{
    for (const WebAddress::QueryItem &item : items) {
        if (item.name == name)
            return item.value;
    }
    return std::nullopt;
}

// The component right after the first "shorts", "embed" or "live" anywhere in the path.
std::optional<QString> componentAfterKeyword(const QStringList &components)
{
    for (qsizetype i = 0; i < components.size(); ++i) {
        const QString &component = components[i];
        if (component == u"shorts" || component == u"embed" || component == u"live")
            return i + 1 < components.size() ? std::optional(components[i + 1]) : std::nullopt;
    }
    return std::nullopt;
}

std::optional<QString> videoCandidate(const WebAddress &url, HostForm form,
                                      const QList<WebAddress::QueryItem> &items)
{
    QStringList components = url.pathComponents();
    if (form == HostForm::shortLink)
        return components.size() >= 2 ? std::optional(components[1]) : std::nullopt;
    if (url.path() == u"/watch")
        return firstQueryValue(items, u"v");
    components.removeAll(QStringLiteral("/"));
    return componentAfterKeyword(components);
}

} // namespace

YouTubeContent::YouTubeContent(std::optional<QString> videoID, std::optional<QString> playlistID)
    : m_videoID(std::move(videoID)), m_playlistID(std::move(playlistID))
{}

std::optional<YouTubeContent> YouTubeContent::fromUrl(const WebAddress &url)
{
    const std::optional<HostForm> form = hostForm(url);
    if (!form)
        return std::nullopt;
    const QList<WebAddress::QueryItem> items = url.queryItems();
    std::optional<QString> playlist = trimmedText(firstQueryValue(items, u"list"));
    std::optional<QString> video = trimmedText(videoCandidate(url, *form, items));
    if (!video && !playlist)
        return std::nullopt;
    return YouTubeContent(std::move(video), std::move(playlist));
}

QString YouTubeContent::id() const
{
    return m_videoID.value_or(QString()) + u'|' + m_playlistID.value_or(QString());
}
