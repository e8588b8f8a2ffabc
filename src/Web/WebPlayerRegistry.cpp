#include "Web/WebPlayerRegistry.h"

#include "Web/WebPlayerScript.h"
#include "Web/WebScriptTarget.h"

#include <QTimer>

void WebPlayerRegistry::setWebView(QObject *view)
{
    Q_ASSERT(!view || dynamic_cast<WebScriptTarget *>(view));
    m_webView = view;
}

void WebPlayerRegistry::clearWebView(const QObject *view)
{
    if (m_webView == view)
        m_webView = nullptr;
}

void WebPlayerRegistry::evaluate(const QString &script)
{
    // The registry is the timer's context, so a registry that is gone runs nothing; the view is
    // read only when the command runs.
    QTimer::singleShot(0, this, [this, script] {
        if (auto *target = dynamic_cast<WebScriptTarget *>(m_webView.data()))
            target->runScript(script);
    });
}

void WebPlayerRegistry::setMuted(bool muted)
{
    evaluate(WebPlayerScript::setMuted(m_service, muted));
}
