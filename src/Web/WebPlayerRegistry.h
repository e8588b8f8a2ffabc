#pragma once

#include "Web/WebPlayerService.h"

#include <QObject>
#include <QPointer>
#include <QString>

// Holds, weakly, the web player view of one service that is on screen and sends it script
// commands. Commands are fire-and-forget: they always run later from the event loop (never inside
// the caller, which may be in the middle of a view update), and are dropped when no view is
// registered by then. Main thread only.
class WebPlayerRegistry : public QObject
{
    Q_OBJECT

public:
    WebPlayerService service() const { return m_service; }
    // The view on screen, or nothing. The registry never keeps a view alive.
    QObject *webView() const { return m_webView; }
    // view must implement WebScriptTarget.
    void setWebView(QObject *view);
    // Clears the registration only if it is this very view, so an older view going away never
    // unregisters a newer one.
    void clearWebView(const QObject *view);

    void evaluate(const QString &script);
    void setMuted(bool muted);

protected:
    explicit WebPlayerRegistry(WebPlayerService service) : m_service(service) {}

private:
    const WebPlayerService m_service;
    QPointer<QObject> m_webView;
};
