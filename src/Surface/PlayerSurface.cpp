#include "Surface/PlayerSurface.h"

#include "Player/PlayerModel.h"
#include "Surface/BufferingBadge.h"
#include "Surface/PlayerHostingView.h"
#include "Surface/PlayerLayerView.h"
#include "Surface/PlayerPromptButton.h"
#include "Web/OKVideoPlayerView.h"
#include "Web/YouTubePlayerView.h"

#include <QPainter>

PlayerSurface::PlayerSurface(PlayerModel &model, const PlayerViewServices &services,
                             QWidget *parent)
    : QWidget(parent), m_model(model), m_services(services), m_prompt(new PlayerPromptButton(this)),
      m_badge(new BufferingBadge(this))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    connect(m_prompt, &QAbstractButton::clicked, &m_model, &PlayerModel::openFile);
    connect(&m_model, &PlayerModel::youtubeContentChanged, this, &PlayerSurface::showPlayer);
    connect(&m_model, &PlayerModel::okVideoContentChanged, this, &PlayerSurface::showPlayer);
    connect(&m_model.engine(), &MpvEngine::hasMediaChanged, this, &PlayerSurface::updateOverlays);
    connect(&m_model, &PlayerModel::isLiveStreamChanged, this, &PlayerSurface::updateOverlays);
    connect(&m_model, &PlayerModel::isBufferingChanged, this, &PlayerSurface::updateOverlays);
    showPlayer();
}

void PlayerSurface::setFullScreen(bool fullScreen)
{
    if (fullScreen == m_isFullScreen)
        return;
    m_isFullScreen = fullScreen;
    showPlayer();
}

void PlayerSurface::setPortraitMode(PortraitDisplayMode mode)
{
    if (mode == m_portraitMode)
        return;
    m_portraitMode = mode;
    showPlayer();
}

void PlayerSurface::showPlayer()
{
    // YouTube wins over OK.ru, and either over the engine's picture.
    if (const auto &youtube = m_model.youtubeContent()) {
        if (auto *view = qobject_cast<YouTubePlayerView *>(m_player))
            view->setContent(*youtube);
        else
            replacePlayer(new YouTubePlayerView(*youtube, m_services, this));
    } else if (const auto &okVideo = m_model.okVideoContent()) {
        if (auto *view = qobject_cast<OKVideoPlayerView *>(m_player))
            view->setContent(*okVideo);
        else
            replacePlayer(new OKVideoPlayerView(*okVideo, m_services, this));
    } else {
        auto *view = qobject_cast<PlayerLayerView *>(m_player);
        if (!view) {
            // Only one picture at a time may hold the engine's render context: the old player
            // goes before the new one is made.
            replacePlayer(nullptr);
            view = new PlayerLayerView(m_services.surfaces, m_services.notifier, this);
            connect(view->hostingView(), &PlayerHostingView::frameShown, this,
                    &PlayerSurface::frameShown);
            replacePlayer(view);
        }
        view->apply(m_model.engine(), m_portraitMode, m_isFullScreen);
    }
    updateOverlays();
}

void PlayerSurface::replacePlayer(QWidget *player)
{
    if (m_player != player)
        delete m_player.data();
    m_player = player;
    if (!player)
        return;
    player->setGeometry(rect());
    player->lower();
    player->show();
}

void PlayerSurface::updateOverlays()
{
    const bool webContent = m_model.youtubeContent() || m_model.okVideoContent();
    m_prompt->setVisible(!webContent && !m_model.engine().hasMedia());
    // Buffering of media on demand shows nothing here: only live streams get the badge.
    m_badge->setVisible(m_model.isLiveStream() && m_model.isBuffering());
    placeOverlays();
}

bool PlayerSurface::isPromptShown() const
{
    return m_prompt->isVisible();
}

bool PlayerSurface::isBufferingBadgeShown() const
{
    return m_badge->isVisible();
}

void PlayerSurface::placeOverlays()
{
    m_prompt->setGeometry(rect());
    const QSize badge = m_badge->sizeHint();
    m_badge->setGeometry(
        QRect(QPoint((width() - badge.width()) / 2, (height() - badge.height()) / 2), badge));
    m_prompt->raise();
    m_badge->raise();
}

void PlayerSurface::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(rect(), Qt::black);
}

void PlayerSurface::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_player)
        m_player->setGeometry(rect());
    placeOverlays();
}
