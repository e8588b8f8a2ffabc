#pragma once

#include "UI/ChannelRowAction.h"

#include <QListView>

class ChannelListModel;
class ChannelRowDelegate;
struct PlaylistEntry;

// A channel list: uniform drawn rows, so only the rows on screen cost anything however long the
// list is. Repaints when its rows' appearance changes.
class ChannelListView : public QListView
{
    Q_OBJECT

public:
    ChannelListView(ChannelListModel &model, ChannelRowDelegate *delegate,
                    QWidget *parent = nullptr);

    ChannelRowDelegate *rowDelegate() const { return m_delegate; }
    // Where a row's button is, in the viewport; an empty rectangle for a row not shown.
    QRect actionRect(int row, ChannelRowAction action) const;

Q_SIGNALS:
    void actionTriggered(ChannelRowAction action, const PlaylistEntry &entry);

private:
    // Rows laid out per step: about half a millisecond's work.
    static constexpr int layoutBatchRows = 10'000;

    ChannelRowDelegate *m_delegate;
};
