#pragma once

#include "Base/WeakViewSlot.h"
#include "Web/WebPlayerService.h"
#include "Web/WebScriptTarget.h"

#include <QObject>
#include <QString>

// Holds, weakly, the web player view of one service that is on screen and sends it script
// commands. Commands are fire-and-forget: they always run later from the event loop (never inside
// the caller, which may be in the middle of a view update), and are dropped when no view is
// registered by then. Main thread only.
class WebPlayerRegistry : public QObject, public WeakViewSlot<WebScriptTarget>
{
    Q_OBJECT

public:
    WebPlayerService service() const { return m_service; }
    // The view on screen, or nothing.
    QObject *webView() const { return view(); }

    void evaluate(const QString &script);
    void setMuted(bool muted);

protected:
    explicit WebPlayerRegistry(WebPlayerService service) : m_service(service) {}

private:
    const WebPlayerService m_service;
};
