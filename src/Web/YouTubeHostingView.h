#pragma once

#include "Recording/PlayerRecordingSurface.h"
#include "Web/WebScriptTarget.h"

#include <QTimer>
#include <QWebEngineView>

#include <chrono>

class AppNotifier;
class QLabel;
class QWebEngineProfile;
class WebPlayerPage;

// The browser view of both web players. It runs the registries' scripts, is the recordable
// surface while it is on screen (its whole bounds hold the picture), and tells the application
// about every mouse press on it before the page gets the press too. When its page process dies
// it says so over the picture, and the next load starts in a fresh page.
class YouTubeHostingView : public QWebEngineView,
                           public WebScriptTarget,
                           public PlayerRecordingSurface
{
    Q_OBJECT

public:
    // Presses are announced through the notifier; pages are made in the profile.
    YouTubeHostingView(AppNotifier &notifier, QWebEngineProfile &profile, QWidget *parent);

    void loadPageText(const QString &html, const QUrl &baseURL);
    // Gives up (stops loading) when the page has not finished loading within the time-out.
    void loadSitePage(const QUrl &url, const QByteArray &referrer,
                      std::chrono::milliseconds timeout);
    void stopLoading();

    void runScript(const QString &script) override;
    QWidget *recordingView() override { return this; }
    QRect recordingRectInView() const override { return rect(); }
    // The page as the browser last composed it.
    CapturedPicture recordingPicture(const QRect &rect) override;

    // The message shown over the picture, empty while the page is alive.
    QString failureMessage() const;

Q_SIGNALS:
    // The page process ended: what was loaded is gone.
    void pageEnded();

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    // The page to load into: the current one, or a new one after the old one's process died.
    WebPlayerPage *livePage();
    void usePage(WebPlayerPage *page);
    void showFailure(const QString &message);

    AppNotifier &m_notifier;
    QWebEngineProfile &m_profile;
    WebPlayerPage *m_page = nullptr;
    QLabel *m_failure;
    QTimer m_loadTimeout;
    bool m_pageEnded = false;
};
