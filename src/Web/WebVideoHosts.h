#pragma once

#include <QStringView>

// Host names of the two web video services, lower-case and without a leading dot. Subdomains of
// the main and privacy-enhanced YouTube hosts and of the OK.ru host are recognised as well.
namespace WebVideoHosts {
inline constexpr QStringView youTubeShortLink = u"youtu.be";
inline constexpr QStringView youTubeMain = u"youtube.com";
inline constexpr QStringView youTubePrivacyEnhanced = u"youtube-nocookie.com";
inline constexpr QStringView okRu = u"ok.ru";
// YouTube's script that defines the YT namespace and calls onYouTubeIframeAPIReady().
inline constexpr QStringView youTubeIframeApi = u"https://www.youtube.com/iframe_api";

// True for the host itself and for any subdomain of it ("m.ok.ru"), never for look-alikes
// ("youtube.com.example", "notyoutube.com").
inline bool isHostOrSubdomain(QStringView lowerHost, QStringView service)
{
    return lowerHost == service ||
           (lowerHost.size() > service.size() && lowerHost.endsWith(service) &&
            lowerHost[lowerHost.size() - service.size() - 1] == u'.');
}
} // namespace WebVideoHosts
