#include "Web/WebPlayerPage.h"

#include "Web/WebPlayerRequestInterceptor.h"
#include "Web/WebVideoHosts.h"

#include <QWebEngineFullScreenRequest>
#include <QWebEngineSettings>

using namespace Qt::StringLiterals;

namespace {

// What a frame inside the player page may show: web content and the page's own generated
// documents, never local files or the browser's internal pages.
bool isFrameContent(const QUrl &url)
{
    static const QStringList schemes{u"https"_s, u"http"_s, u"data"_s, u"blob"_s, u"about"_s};
    return schemes.contains(url.scheme().toLower());
}

} // namespace

WebPlayerPage::WebPlayerPage(QWebEngineProfile &profile, QObject *parent)
    : QWebEnginePage(&profile, parent), m_interceptor(new WebPlayerRequestInterceptor(this))
{
    setUrlRequestInterceptor(m_interceptor);
    applySettings();
    connect(this, &QWebEnginePage::featurePermissionRequested, this,
            &WebPlayerPage::answerPermissionRequest);
    connect(this, &QWebEnginePage::fullScreenRequested, this,
            [](QWebEngineFullScreenRequest request) { request.accept(); });
}

void WebPlayerPage::applySettings()
{
    QWebEngineSettings *page = settings();
    page->setAttribute(QWebEngineSettings::PlaybackRequiresUserGesture, false);
    page->setAttribute(QWebEngineSettings::FullScreenSupportEnabled, true);
    page->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, false);
    page->setAttribute(QWebEngineSettings::AllowWindowActivationFromJavaScript, false);
    page->setAttribute(QWebEngineSettings::JavascriptCanAccessClipboard, false);
    page->setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, false);
    page->setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, false);
    page->setAttribute(QWebEngineSettings::PluginsEnabled, false);
    page->setAttribute(QWebEngineSettings::PdfViewerEnabled, false);
    page->setAttribute(QWebEngineSettings::ScreenCaptureEnabled, false);
    page->setAttribute(QWebEngineSettings::WebRTCPublicInterfacesOnly, true);
    // Our page claims an origin of its own that serves nothing: no icon requests to it.
    page->setAttribute(QWebEngineSettings::AutoLoadIconsForPage, false);
    // A file dropped on the video is the player's to open, not the page's to show.
    page->setAttribute(QWebEngineSettings::NavigateOnDropEnabled, false);
}

void WebPlayerPage::loadPageText(const QString &html, const QUrl &baseURL)
{
    m_siteHost.reset();
    m_interceptor->setReferrer({}, {});
    setHtml(html, baseURL);
}

void WebPlayerPage::loadSitePage(const QUrl &url, const QByteArray &referrer)
{
    m_siteHost = url.host().toLower();
    m_interceptor->setReferrer(url, referrer);
    load(url);
}

bool WebPlayerPage::acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame)
{
    if (!isMainFrame)
        return isFrameContent(url);
    // Typed loads are the ones this class starts; a reload repeats one of them.
    if (type == NavigationTypeTyped || type == NavigationTypeReload)
        return true;
    return m_siteHost && url.scheme().startsWith(u"http"_s, Qt::CaseInsensitive) &&
           WebVideoHosts::isHostOrSubdomain(url.host().toLower(), *m_siteHost);
}

QWebEnginePage *WebPlayerPage::createWindow(WebWindowType)
{
    return nullptr;
}

void WebPlayerPage::answerPermissionRequest(const QUrl &origin, Feature feature)
{
    setFeaturePermission(origin, feature, PermissionDeniedByUser);
}
