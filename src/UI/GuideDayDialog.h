#pragma once

#include "Playlist/PlaylistEntry.h"

#include <QDialog>

class PlayerModel;
class QListWidget;

// The rest of today on one channel: each programme's times, title, sub-title and category, the
// description on hover, the one on now marked. It follows the guide's clock and stays open beside
// the window (not modal).
class GuideDayDialog : public QDialog
{
    Q_OBJECT

public:
    GuideDayDialog(PlayerModel &model, const PlaylistEntry &channel, QWidget *parent = nullptr);

    QListWidget *programmeList() const { return m_list; }

private:
    void refresh();

    PlayerModel &m_model;
    PlaylistEntry m_channel;
    QListWidget *m_list;
};
