#pragma once

#include "Web/PlayerViewServices.h"

#include <QWidget>

class ContentState;
class PlayerModel;
class PlaybackFailureNotice;
class PlayerSurface;
class QLabel;

// The picture with the player's messages over it: an error in the middle, a toast near the
// bottom. The cursor over the picture hides while playing until the mouse moves.
class PlayerArea : public QWidget
{
    Q_OBJECT

public:
    PlayerArea(PlayerModel &model, ContentState &state, const PlayerViewServices &services,
               QWidget *parent = nullptr);

    PlayerSurface *surface() const { return m_surface; }
    QLabel *errorLabel() const { return m_error; }
    QLabel *toastLabel() const { return m_toast; }
    PlaybackFailureNotice *failureNotice() const { return m_failure; }
    // Room kept free at the bottom for controls floating over the picture.
    void setBottomInset(int inset);
    bool isCursorHidden() const { return m_cursorHidden; }
    // The mouse moved somewhere in the window: a hidden cursor comes back.
    void showCursor();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void hideCursor();
    void refreshMessages();
    void placeChildren();

    PlayerModel &m_model;
    ContentState &m_state;
    PlayerSurface *m_surface;
    QLabel *m_error;
    QLabel *m_toast;
    PlaybackFailureNotice *m_failure;
    int m_bottomInset = 0;
    bool m_cursorHidden = false;
};
