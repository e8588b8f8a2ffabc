#pragma once

#include <QObject>
#include <QUuid>

#include <optional>

class ContentState;
class PlayerModel;
class QWidget;

// The window's title and shape: the title is the player's, and the window takes the video's
// shape at most once per media load (not in full screen, maximised or in a portrait mode, where
// the window's shape is the user's), staying on its screen.
class TitleBarHandler : public QObject
{
    Q_OBJECT

public:
    TitleBarHandler(QWidget &window, QWidget &picture, PlayerModel &model, ContentState &state,
                    QObject *parent = nullptr);

    // The media load the window was last fitted to.
    const std::optional<QUuid> &lastFittedLoad() const { return m_lastFitted; }

private:
    void refreshTitle();
    void fitToVideo();

    QWidget &m_window;
    QWidget &m_picture;
    PlayerModel &m_model;
    ContentState &m_state;
    std::optional<QUuid> m_lastFitted;
};
