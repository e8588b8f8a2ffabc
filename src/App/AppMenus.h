#pragma once

#include <QObject>

class PlayerModel;
class QAction;
class QMenuBar;

// The File menu's "Open Media…" (Ctrl+O, ⌘O on a Mac) and the Playback menu. Play/Pause and
// Mute/Unmute follow the model. Playing, stopping and seeking carry no shortcuts here: the keyboard
// monitor owns those keys and must see them first.
class AppMenus : public QObject
{
    Q_OBJECT

public:
    AppMenus(QMenuBar &menuBar, PlayerModel &model);

private:
    void addFileMenu(QMenuBar &menuBar);
    void addPlaybackMenu(QMenuBar &menuBar);
    void updateTitles();

    PlayerModel &m_model;
    QAction *m_playPause = nullptr;
    QAction *m_mute = nullptr;
};
