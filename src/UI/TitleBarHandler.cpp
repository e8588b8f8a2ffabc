#include "UI/TitleBarHandler.h"

#include "Base/AppIdentity.h"
#include "Player/PlayerModel.h"
#include "UI/ContentState.h"
#include "UI/WindowFit.h"

#include <QScreen>
#include <QWidget>

TitleBarHandler::TitleBarHandler(QWidget &window, QWidget &picture, PlayerModel &model,
                                 ContentState &state, QObject *parent)
    : QObject(parent), m_window(window), m_picture(picture), m_model(model), m_state(state)
{
    connect(&m_model, &PlayerModel::titleChanged, this, &TitleBarHandler::refreshTitle);
    for (auto signal : {&PlayerModel::mediaLoadIDChanged, &PlayerModel::videoAspectRatioChanged,
                        &PlayerModel::videoAspectMediaLoadIDChanged})
        connect(&m_model, signal, this, &TitleBarHandler::fitToVideo, Qt::QueuedConnection);
    refreshTitle();
}

void TitleBarHandler::refreshTitle()
{
    const QString &title = m_model.title();
    m_window.setWindowTitle(title.isEmpty() ? AppIdentity::displayName.toString() : title);
}

void TitleBarHandler::fitToVideo()
{
    // Only once the aspect ratio belongs to the current load, and only once for that load.
    if (m_model.videoAspectMediaLoadID() != m_model.mediaLoadID() ||
        m_lastFitted == m_model.mediaLoadID() || m_model.videoAspectRatio() <= 0)
        return;
    m_lastFitted = m_model.mediaLoadID();
    if (m_state.isFullScreen() || m_state.portraitMode() != PortraitDisplayMode::normal ||
        (m_window.windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen)) ||
        !m_window.isVisible())
        return;
    const QScreen *screen = m_window.screen();
    if (!screen)
        return;
    // The free area for the window's inside: the screen's, less the frame the system adds.
    const QRect frame = m_window.frameGeometry();
    const QSize decoration = frame.size() - m_window.size();
    QRect available = screen->availableGeometry();
    available.setSize(available.size() - decoration);
    const std::optional<QSize> size = WindowFit::fittedWindowSize(
        m_window.size(), m_picture.size(), m_model.videoAspectRatio(), available.size(),
        m_window.minimumSizeHint().expandedTo(m_window.minimumSize()));
    if (!size)
        return;
    const QRect placed = WindowFit::placed(m_window.geometry(), *size, available);
    m_window.setGeometry(placed);
}
