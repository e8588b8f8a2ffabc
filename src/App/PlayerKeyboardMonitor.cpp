#include "App/PlayerKeyboardMonitor.h"

#include "App/PlayerKeyMap.h"
#include "Player/PlayerModel.h"

#include <QGuiApplication>
#include <QInputMethodQueryEvent>
#include <QKeyEvent>
#include <QWindow>

PlayerKeyboardMonitor::PlayerKeyboardMonitor(PlayerModel &model) : m_model(&model)
{
    QCoreApplication::instance()->installEventFilter(this);
}

PlayerKeyboardMonitor::~PlayerKeyboardMonitor()
{
    if (QCoreApplication *application = QCoreApplication::instance())
        application->removeEventFilter(this);
}

bool PlayerKeyboardMonitor::eventFilter(QObject *watched, QEvent *event)
{
    // A key press travels from its window to the focused control and up through its parents;
    // it is judged once, at the window.
    if (event->type() != QEvent::KeyPress || !watched->isWindowType() || !m_model)
        return false;
    const auto &window = *static_cast<QWindow *>(watched);
    if (isPanel(window) || isEditingText(window))
        return false;
    return handle(*static_cast<QKeyEvent *>(event));
}

bool PlayerKeyboardMonitor::isPanel(const QWindow &window)
{
    return window.type() != Qt::Window || QGuiApplication::modalWindow() != nullptr;
}

bool PlayerKeyboardMonitor::isEditingText(const QWindow &window)
{
    QObject *focus = window.focusObject();
    if (!focus)
        return false;
    QInputMethodQueryEvent query(Qt::ImEnabled);
    QCoreApplication::sendEvent(focus, &query);
    return query.value(Qt::ImEnabled).toBool();
}

bool PlayerKeyboardMonitor::handle(const QKeyEvent &event)
{
    using Kind = PlayerKeyMap::Action::Kind;
    const PlayerKeyMap::Action action =
        PlayerKeyMap::actionFor(event.key(), event.modifiers(), event.isAutoRepeat());
    switch (action.kind) {
    case Kind::pass:
    case Kind::swallow:
        break;
    case Kind::togglePlayback:
        m_model->togglePlayback();
        break;
    case Kind::stop:
        m_model->stop();
        break;
    case Kind::skip:
        m_model->skip(action.amount);
        break;
    case Kind::adjustVolume:
        m_model->adjustVolume(action.amount);
        break;
    }
    return action.consumesKey();
}
