#include "Web/WebPlayerRegistry.h"

#include "Web/WebPlayerScript.h"

#include <QTimer>

void WebPlayerRegistry::evaluate(const QString &script)
{
    // The registry is the timer's context, so a registry that is gone runs nothing; the view is
    // read only when the command runs.
    QTimer::singleShot(0, this, [this, script] {
        if (WebScriptTarget *view = target())
            view->runScript(script);
    });
}

void WebPlayerRegistry::setMuted(bool muted)
{
    evaluate(WebPlayerScript::setMuted(m_service, muted));
}
