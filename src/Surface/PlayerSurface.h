#pragma once

#include "Surface/PortraitDisplayMode.h"
#include "Web/PlayerViewServices.h"

#include <QPointer>
#include <QWidget>

class BufferingBadge;
class PlayerModel;
class PlayerPromptButton;

// The video area. Back to front: black; the YouTube player when the model has YouTube content,
// else the OK.ru player, else the media engine's picture; the prompt that opens a file while
// nothing at all is loaded; and the buffering badge while a live stream waits for data.
// Exactly one of the three players exists at a time: switching destroys the old one.
class PlayerSurface : public QWidget
{
    Q_OBJECT

public:
    PlayerSurface(PlayerModel &model, const PlayerViewServices &services,
                  QWidget *parent = nullptr);

    bool isFullScreen() const { return m_isFullScreen; }
    void setFullScreen(bool fullScreen);
    PortraitDisplayMode portraitMode() const { return m_portraitMode; }
    void setPortraitMode(PortraitDisplayMode mode);

    // The player shown now: a YouTubePlayerView, an OKVideoPlayerView or a PlayerLayerView.
    QWidget *currentPlayer() const { return m_player; }
    bool isPromptShown() const;
    bool isBufferingBadgeShown() const;

Q_SIGNALS:
    // The engine's picture has drawn a new video frame.
    void frameShown();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void showPlayer();
    void replacePlayer(QWidget *player);
    void updateOverlays();
    void placeOverlays();

    PlayerModel &m_model;
    const PlayerViewServices m_services;
    bool m_isFullScreen = false;
    PortraitDisplayMode m_portraitMode = PortraitDisplayMode::normal;
    QPointer<QWidget> m_player;
    PlayerPromptButton *m_prompt;
    BufferingBadge *m_badge;
};
