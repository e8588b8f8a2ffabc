#include "UI/ChannelListView.h"

#include "Playlist/ChannelListModel.h"
#include "UI/ChannelRowDelegate.h"

ChannelListView::ChannelListView(ChannelListModel &model, ChannelRowDelegate *delegate,
                                 QWidget *parent)
    : QListView(parent), m_delegate(delegate)
{
    setObjectName(QStringLiteral("channels"));
    delegate->setParent(this);
    setModel(&model);
    setItemDelegate(delegate);
    setUniformItemSizes(true);
    // A long list is laid out in steps between events, the rows on screen first: in one pass,
    // 100,000 new rows held the window for 5 ms, most of it faulting in the memory the view keeps
    // per row.
    setLayoutMode(QListView::Batched);
    setBatchSize(layoutBatchRows);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setMouseTracking(true);
    setFrameShape(QFrame::NoFrame);
    connect(delegate, &ChannelRowDelegate::actionTriggered, this,
            &ChannelListView::actionTriggered);
    // Only the rows on screen are drawn again.
    connect(delegate, &ChannelRowDelegate::appearanceChanged, viewport(),
            qOverload<>(&QWidget::update));
}

QRect ChannelListView::actionRect(int row, ChannelRowAction action) const
{
    const QRect rowRect = visualRect(model()->index(row, 0));
    return rowRect.isValid() ? m_delegate->actionRect(rowRect, action) : QRect();
}
