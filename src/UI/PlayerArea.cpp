#include "UI/PlayerArea.h"

#include "Player/PlayerModel.h"
#include "Surface/PlayerSurface.h"
#include "UI/ContentState.h"
#include "UI/PlaybackFailureNotice.h"

#include <QGuiApplication>
#include <QLabel>

namespace {

constexpr int messageMargin = 16;

QLabel *messageLabel(const QString &name, QWidget *parent)
{
    auto *label = new QLabel(parent);
    label->setObjectName(name);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignCenter);
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    label->hide();
    return label;
}

} // namespace

PlayerArea::PlayerArea(PlayerModel &model, ContentState &state, const PlayerViewServices &services,
                       QWidget *parent)
    : QWidget(parent), m_model(model), m_state(state),
      m_surface(new PlayerSurface(model, services, this)),
      m_error(messageLabel(QStringLiteral("errorMessage"), this)),
      m_toast(messageLabel(QStringLiteral("toast"), this)),
      m_failure(new PlaybackFailureNotice(this))
{
    setObjectName(QStringLiteral("PlayerArea"));
    m_surface->setPortraitMode(state.portraitMode());

    connect(&m_model, &PlayerModel::errorMessageChanged, this, &PlayerArea::refreshMessages);
    connect(&m_model, &PlayerModel::toastMessageChanged, this, &PlayerArea::refreshMessages);
    connect(&m_model, &PlayerModel::playbackFailureChanged, this, &PlayerArea::refreshMessages);
    connect(m_failure, &PlaybackFailureNotice::dismissed, &m_model,
            &PlayerModel::dismissPlaybackFailure);
    connect(&m_state, &ContentState::portraitModeChanged, this,
            [this] { m_surface->setPortraitMode(m_state.portraitMode()); });
    connect(&m_state, &ContentState::isFullScreenChanged, this,
            [this] { m_surface->setFullScreen(m_state.isFullScreen()); });
    connect(&m_state, &ContentState::cursorHideDue, this, &PlayerArea::hideCursor);
    refreshMessages();
}

void PlayerArea::setBottomInset(int inset)
{
    if (inset == m_bottomInset)
        return;
    m_bottomInset = inset;
    placeChildren();
}

void PlayerArea::hideCursor()
{
    // Like a player's "hidden until the mouse moves": one override for the whole application,
    // lifted by the next movement whatever widget is under the mouse.
    if (m_cursorHidden)
        return;
    m_cursorHidden = true;
    QGuiApplication::setOverrideCursor(Qt::BlankCursor);
}

void PlayerArea::showCursor()
{
    if (!m_cursorHidden)
        return;
    m_cursorHidden = false;
    QGuiApplication::restoreOverrideCursor();
}

void PlayerArea::refreshMessages()
{
    const std::optional<QString> &error = m_model.errorMessage();
    m_error->setText(error.value_or(QString()));
    m_error->setVisible(error.has_value());
    const std::optional<QString> &toast = m_model.toastMessage();
    m_toast->setText(toast.value_or(QString()));
    m_toast->setVisible(toast.has_value());
    const std::optional<QString> &failure = m_model.playbackFailure();
    m_failure->setText(failure.value_or(QString()));
    m_failure->setVisible(failure.has_value());
    placeChildren();
}

void PlayerArea::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeChildren();
}

void PlayerArea::placeChildren()
{
    m_surface->setGeometry(rect());
    const int messageWidth = std::min(width() - 2 * messageMargin, 480);
    for (QLabel *label : {m_error, m_toast}) {
        label->setFixedWidth(std::max(0, messageWidth));
        label->adjustSize();
    }
    const QPoint center = rect().center();
    m_error->move(center.x() - m_error->width() / 2, center.y() - m_error->height() / 2);
    m_toast->move(center.x() - m_toast->width() / 2,
                  height() - m_bottomInset - m_toast->height() - messageMargin);
    m_failure->setFixedWidth(std::max(0, messageWidth));
    m_failure->adjustSize();
    m_failure->move(center.x() - m_failure->width() / 2, messageMargin);
    m_error->raise();
    m_failure->raise();
    m_toast->raise();
}
