#pragma once

#include "Playlist/ChannelListModel.h"
#include "UI/ChannelRowAction.h"

#include <QWidget>

class ChannelFilterBar;
class ChannelListView;
class ChannelLogoLoader;
class ContentState;
class LocalM3UStore;
class PlayerModel;
class QLabel;
class QStackedWidget;
struct PlaylistEntry;

// What both sidebar panels show of their channels: the search and filter row over the list of
// rows, or over a text in the list's place while the panel has nothing to list. A row's play
// button plays its channel as a live stream under its name; the other buttons are the panel's to
// handle.
class ChannelListSection : public QWidget
{
    Q_OBJECT

public:
    ChannelListSection(ChannelListModel::Rows rows, PlayerModel &model, ContentState &state,
                       LocalM3UStore &store, ChannelLogoLoader &logos,
                       const QString &emptyText = {}, QWidget *parent = nullptr);

    ChannelFilterBar *filters() const { return m_filters; }
    ChannelListView *list() const { return m_list; }
    QLabel *emptyText() const { return m_empty; }
    // The empty text instead of the list, or the list again.
    void showEmptyText(bool shown);

Q_SIGNALS:
    // A row's button other than play.
    void actionTriggered(ChannelRowAction action, const PlaylistEntry &entry);

private:
    ChannelFilterBar *m_filters;
    QStackedWidget *m_content;
    ChannelListView *m_list;
    QLabel *m_empty;
};
