#include "Web/YouTubeHostingView.h"

#include "Base/AppNotifier.h"
#include "Web/WebPlayerPage.h"
#include "Web/WebPlayerTexts.h"

#include <QChildEvent>
#include <QLabel>
#include <QPointer>
#include <QWindow>

YouTubeHostingView::YouTubeHostingView(AppNotifier &notifier, QWebEngineProfile &profile,
                                       QWidget *parent)
    : QWebEngineView(parent), m_notifier(notifier), m_profile(profile), m_failure(new QLabel(this))
{
    m_failure->setAlignment(Qt::AlignCenter);
    m_failure->setWordWrap(true);
    m_failure->setAutoFillBackground(true);
    m_failure->setStyleSheet(QStringLiteral("background: #000; color: #ddd; padding: 16px;"));
    m_failure->hide();
    m_loadTimeout.setSingleShot(true);
    connect(&m_loadTimeout, &QTimer::timeout, this, &YouTubeHostingView::stopLoading);
    usePage(new WebPlayerPage(m_profile, this));
}

void YouTubeHostingView::usePage(WebPlayerPage *page)
{
    // The view deletes a replaced page that is its child on its own; any other goes here.
    const QPointer<WebPlayerPage> old = m_page;
    m_page = page;
    setPage(page);
    if (old)
        old->deleteLater();
    connect(page, &QWebEnginePage::loadFinished, &m_loadTimeout, &QTimer::stop);
    connect(page, &QWebEnginePage::renderProcessTerminated, this,
            [this](QWebEnginePage::RenderProcessTerminationStatus status) {
                m_pageEnded = true;
                m_loadTimeout.stop();
                if (status != QWebEnginePage::NormalTerminationStatus)
                    showFailure(WebPlayerTexts::pageStopped.toString());
                Q_EMIT pageEnded();
            });
}

WebPlayerPage *YouTubeHostingView::livePage()
{
    if (m_pageEnded) {
        m_pageEnded = false;
        usePage(new WebPlayerPage(m_profile, this));
        m_failure->hide();
    }
    return m_page;
}

void YouTubeHostingView::loadPageText(const QString &html, const QUrl &baseURL)
{
    m_loadTimeout.stop();
    livePage()->loadPageText(html, baseURL);
}

void YouTubeHostingView::loadSitePage(const QUrl &url, const QByteArray &referrer,
                                      std::chrono::milliseconds timeout)
{
    livePage()->loadSitePage(url, referrer);
    m_loadTimeout.start(timeout);
}

void YouTubeHostingView::stopLoading()
{
    m_loadTimeout.stop();
    stop();
}

void YouTubeHostingView::runScript(const QString &script)
{
    if (!m_pageEnded)
        m_page->runJavaScript(script);
}

QString YouTubeHostingView::failureMessage() const
{
    return m_failure->isVisible() ? m_failure->text() : QString();
}

void YouTubeHostingView::showFailure(const QString &message)
{
    m_failure->setText(message);
    m_failure->setGeometry(rect());
    m_failure->show();
    m_failure->raise();
}

bool YouTubeHostingView::event(QEvent *event)
{
    // The browser engine draws into a child widget it creates itself; presses arrive there.
    if (event->type() == QEvent::ChildAdded) {
        QObject *child = static_cast<QChildEvent *>(event)->child();
        if (child != m_failure && child->isWidgetType())
            child->installEventFilter(this);
    }
    return QWebEngineView::event(event);
}

bool YouTubeHostingView::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick)
        Q_EMIT m_notifier.playerSurfaceClicked(window()->windowHandle());
    return QWebEngineView::eventFilter(watched, event);
}

void YouTubeHostingView::resizeEvent(QResizeEvent *event)
{
    QWebEngineView::resizeEvent(event);
    m_failure->setGeometry(rect());
}

CapturedPicture YouTubeHostingView::recordingPicture(const QRect &rect)
{
    return {grab(rect).toImage(), false};
}
