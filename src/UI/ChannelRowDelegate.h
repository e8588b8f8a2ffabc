#pragma once

#include "Playlist/ChannelListModel.h"
#include "UI/ChannelRowAction.h"

#include <QList>
#include <QStyledItemDelegate>

class ChannelLogoLoader;
class LocalM3UStore;
class PlayerModel;
struct GuideProgramme;
struct PlaylistEntry;

// Draws a channel row (logo, name, metadata line or the programme on now with its progress, the
// playing mark and the row's buttons) and turns clicks on its buttons into actions. Rows are
// drawn, not made of widgets, so a list of a million channels costs only the rows on screen.
class ChannelRowDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    static constexpr int rowHeight = 48;
    static constexpr int logoSize = 32;
    static constexpr int buttonSize = 26;

    ChannelRowDelegate(ChannelListModel::Rows rows, PlayerModel &model, LocalM3UStore &store,
                       ChannelLogoLoader &logos, QObject *parent = nullptr);

    // The buttons of a row, left to right.
    QList<ChannelRowAction> actions() const;
    // Where a button sits in a row.
    QRect actionRect(const QRect &row, ChannelRowAction action) const;
    // The row's second line at the time: the programme on now, else the metadata line.
    QString secondLine(const QModelIndex &index, qint64 time) const;
    // The help text of a button for an entry.
    QString helpText(ChannelRowAction action, const PlaylistEntry &entry) const;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

Q_SIGNALS:
    void actionTriggered(ChannelRowAction action, const PlaylistEntry &entry);
    // What the rows show changed: the channel playing, the saved links or a logo.
    void appearanceChanged();

private:
    std::optional<ChannelRowAction> actionAt(const QRect &row, const QPoint &point) const;
    QString symbolOf(ChannelRowAction action, const PlaylistEntry &entry) const;
    void paintLogo(QPainter *painter, const QRect &area, const PlaylistEntry &entry) const;
    static QString secondLineOf(const std::optional<GuideProgramme> &onNow,
                                const QModelIndex &index);
    // How far the programme has come at the time, as a thin bar.
    void paintProgress(QPainter *painter, const QRect &track, const GuideProgramme &programme,
                       qint64 time) const;

    ChannelListModel::Rows m_rows;
    PlayerModel &m_model;
    LocalM3UStore &m_store;
    ChannelLogoLoader &m_logos;
};
