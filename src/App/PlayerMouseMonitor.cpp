#include "App/PlayerMouseMonitor.h"

#include "App/AppNotifier.h"

#include <QCoreApplication>
#include <QEvent>

PlayerMouseMonitor::PlayerMouseMonitor()
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
        Q_EMIT AppNotifier::shared().playerMouseMoved(watched);
    return false;
}
