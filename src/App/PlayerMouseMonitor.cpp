#include "App/PlayerMouseMonitor.h"

#include "Base/AppNotifier.h"

#include <QCoreApplication>
#include <QEvent>

PlayerMouseMonitor::PlayerMouseMonitor(AppNotifier &notifier) : m_notifier(notifier)
{
    QCoreApplication::instance()->installEventFilter(this);
}

PlayerMouseMonitor::~PlayerMouseMonitor()
{
    if (QCoreApplication *application = QCoreApplication::instance())
        application->removeEventFilter(this);
}

bool PlayerMouseMonitor::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseMove && watched->isWindowType())
        Q_EMIT m_notifier.playerMouseMoved(watched);
    return false;
}
