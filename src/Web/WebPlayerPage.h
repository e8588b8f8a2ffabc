#pragma once

#include <QString>
#include <QWebEnginePage>

#include <optional>

class WebPlayerRequestInterceptor;

// A browser page that plays one web video and does nothing else a page might try: it opens no
// windows or pop-ups, its top frame never leaves the site we loaded, it reads no local files,
// and every permission request but full screen of the video is refused. Media starts without a
// user gesture.
class WebPlayerPage : public QWebEnginePage
{
    Q_OBJECT

public:
    WebPlayerPage(QWebEngineProfile &profile, QObject *parent);

    // Our own page text; afterwards the top frame may not go anywhere else.
    void loadPageText(const QString &html, const QUrl &baseURL);
    // A page of another site, requested with that referrer; afterwards the top frame may move
    // within that site (the host and its subdomains) only.
    void loadSitePage(const QUrl &url, const QByteArray &referrer);

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame) override;
    QWebEnginePage *createWindow(WebWindowType type) override;
    // The services' own console chatter is not ours to report.
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString &, int,
                                  const QString &) override
    {}

private:
    void applySettings();
    void answerPermissionRequest(const QUrl &origin, Feature feature);

    WebPlayerRequestInterceptor *m_interceptor;
    // The site the top frame may move within; none while our own page text is shown.
    std::optional<QString> m_siteHost;
};
