#include "UI/ChannelRowDelegate.h"

#include "Base/SymbolIcons.h"
#include "Player/PlayerModel.h"
#include "Player/ProgrammeGuide.h"
#include "Playlist/LocalM3UStore.h"
#include "UI/ChannelLogoLoader.h"
#include "UI/WindowTexts.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>

namespace {

constexpr int margin = 8;
constexpr int gap = 4;
constexpr int symbolSize = 16;

const QColor nameColor(236, 236, 240);
const QColor metadataColor(150, 150, 160);
const QColor hoverColor(255, 255, 255, 18);
const QColor selectedColor(10, 132, 255, 70);
const QColor playingColor(48, 209, 88);
const QColor buttonColor(220, 220, 228);
const QColor progressTrackColor(255, 255, 255, 40);
const QColor progressColor(10, 132, 255);
constexpr int progressHeight = 2;

// A stable colour per name, so a row without a logo is still recognisable at a glance.
QColor fallbackColor(const QString &name)
{
    return QColor::fromHsv(int(qHash(name) % 360), 120, 130);
}

QString initials(const QString &name)
{
    for (const QChar c : name)
        if (c.isLetterOrNumber())
            return QString(c.toUpper());
    return QStringLiteral("?");
}

} // namespace

ChannelRowDelegate::ChannelRowDelegate(ChannelListModel::Rows rows, PlayerModel &model,
                                       LocalM3UStore &store, ChannelLogoLoader &logos,
                                       QObject *parent)
    : QStyledItemDelegate(parent), m_rows(rows), m_model(model), m_store(store), m_logos(logos)
{
    connect(&m_model, &PlayerModel::currentURLChanged, this,
            &ChannelRowDelegate::appearanceChanged);
    connect(&m_store, &LocalM3UStore::entriesChanged, this, &ChannelRowDelegate::appearanceChanged);
    connect(&m_logos, &ChannelLogoLoader::logoSettled, this,
            &ChannelRowDelegate::appearanceChanged);
    // What is on changes with the guide and with the clock.
    connect(&m_model.guide(), &ProgrammeGuide::scheduleChanged, this,
            &ChannelRowDelegate::appearanceChanged);
    connect(&m_model.guide(), &ProgrammeGuide::clockAdvanced, this,
            &ChannelRowDelegate::appearanceChanged);
}

QList<ChannelRowAction> ChannelRowDelegate::actions() const
{
    if (m_rows == ChannelListModel::Rows::networkChannels)
        return {ChannelRowAction::play, ChannelRowAction::save};
    return {ChannelRowAction::play, ChannelRowAction::edit, ChannelRowAction::remove};
}

QRect ChannelRowDelegate::actionRect(const QRect &row, ChannelRowAction action) const
{
    const QList<ChannelRowAction> all = actions();
    const int fromRight = int(all.size() - all.indexOf(action));
    const int left = row.right() - margin - fromRight * (buttonSize + gap) + gap + 1;
    return {left, row.top() + (row.height() - buttonSize) / 2, buttonSize, buttonSize};
}

QString ChannelRowDelegate::helpText(ChannelRowAction action, const PlaylistEntry &entry) const
{
    switch (action) {
    case ChannelRowAction::play:
        return WindowTexts::playChannelHelpPrefix.toString() + entry.name;
    case ChannelRowAction::save:
        return m_store.contains(entry.url) ? WindowTexts::savedToLocal.toString()
                                           : WindowTexts::saveToLocal.toString();
    case ChannelRowAction::edit:
        return WindowTexts::edit.toString();
    case ChannelRowAction::remove:
        return WindowTexts::deleteButton.toString();
    }
    return {};
}

QString ChannelRowDelegate::symbolOf(ChannelRowAction action, const PlaylistEntry &entry) const
{
    switch (action) {
    case ChannelRowAction::play:
        return QStringLiteral("play.fill");
    case ChannelRowAction::save:
        return m_store.contains(entry.url) ? QStringLiteral("bookmark.fill")
                                           : QStringLiteral("bookmark");
    case ChannelRowAction::edit:
        return QStringLiteral("pencil");
    case ChannelRowAction::remove:
        return QStringLiteral("trash");
    }
    return {};
}

std::optional<ChannelRowAction> ChannelRowDelegate::actionAt(const QRect &row,
                                                             const QPoint &point) const
{
    for (const ChannelRowAction action : actions())
        if (actionRect(row, action).contains(point))
            return action;
    return std::nullopt;
}

void ChannelRowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                               const QModelIndex &index) const
{
    const auto entry = index.data(ChannelListModel::EntryRole).value<PlaylistEntry>();
    const QRect row = option.rect;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    if (option.state & QStyle::State_Selected)
        painter->fillRect(row, selectedColor);
    else if (option.state & QStyle::State_MouseOver)
        painter->fillRect(row, hoverColor);

    const QRect logoArea(row.left() + margin, row.top() + (row.height() - logoSize) / 2, logoSize,
                         logoSize);
    paintLogo(painter, logoArea, entry);

    int textRight = actionRect(row, actions().constFirst()).left() - gap;
    const bool playing = m_model.currentURL() == entry.url;
    if (playing) {
        const QRect mark(textRight - symbolSize, row.top() + (row.height() - symbolSize) / 2,
                         symbolSize, symbolSize);
        painter->drawPixmap(mark,
                            SymbolIcons::pixmap(u"speaker.wave.2.fill", symbolSize, playingColor,
                                                painter->device()->devicePixelRatio()));
        textRight = mark.left() - gap;
    }

    const int textLeft = logoArea.right() + 1 + margin;
    const QRect text(textLeft, row.top() + 6, std::max(0, textRight - textLeft), row.height() - 12);
    QFont nameFont = option.font;
    nameFont.setWeight(QFont::DemiBold);
    const qint64 time = ProgrammeGuide::now();
    const std::optional<GuideProgramme> onNow = m_model.guide().schedule().onAt(entry.id, time);
    const QString metadata = secondLineOf(onNow, index);
    const bool hasMetadata = !metadata.isEmpty();
    const QFontMetrics nameMetrics(nameFont);
    painter->setFont(nameFont);
    painter->setPen(playing ? playingColor : nameColor);
    const QRect nameRect = hasMetadata ? text.adjusted(0, 0, 0, -text.height() / 2) : text;
    painter->drawText(nameRect, Qt::AlignLeft | (hasMetadata ? Qt::AlignBottom : Qt::AlignVCenter),
                      nameMetrics.elidedText(entry.name, Qt::ElideRight, text.width()));
    if (hasMetadata) {
        QFont small = option.font;
        small.setPointSizeF(option.font.pointSizeF() * 0.85);
        painter->setFont(small);
        painter->setPen(metadataColor);
        painter->drawText(text.adjusted(0, text.height() / 2 + 1, 0, 0),
                          Qt::AlignLeft | Qt::AlignTop,
                          QFontMetrics(small).elidedText(metadata, Qt::ElideRight, text.width()));
    }
    if (onNow)
        paintProgress(painter, QRect(text.left(), row.bottom() - 5, text.width(), progressHeight),
                      *onNow, time);

    for (const ChannelRowAction action : actions()) {
        const QRect button = actionRect(row, action);
        const QRect symbol(button.center() - QPoint(symbolSize / 2 - 1, symbolSize / 2 - 1),
                           QSize(symbolSize, symbolSize));
        painter->drawPixmap(symbol,
                            SymbolIcons::pixmap(symbolOf(action, entry), symbolSize, buttonColor,
                                                painter->device()->devicePixelRatio()));
    }
    painter->restore();
}

void ChannelRowDelegate::paintLogo(QPainter *painter, const QRect &area,
                                   const PlaylistEntry &entry) const
{
    QPainterPath rounded;
    rounded.addRoundedRect(area, 6, 6);
    const QImage logo = entry.logoURL ? m_logos.logo(*entry.logoURL) : QImage();
    if (!logo.isNull()) {
        painter->fillPath(rounded, QColor(255, 255, 255, 20));
        QSize size = logo.deviceIndependentSize().toSize();
        size.scale(area.size(), Qt::KeepAspectRatio);
        QRect target(QPoint(), size);
        target.moveCenter(area.center());
        painter->drawImage(target, logo);
        return;
    }
    // No logo, or not yet: the first letter of the name on a colour of its own.
    painter->fillPath(rounded, fallbackColor(entry.name));
    QFont font = painter->font();
    font.setBold(true);
    font.setPixelSize(logoSize / 2);
    painter->setFont(font);
    painter->setPen(Qt::white);
    painter->drawText(area, Qt::AlignCenter, initials(entry.name));
}

QString ChannelRowDelegate::secondLine(const QModelIndex &index, qint64 time) const
{
    const auto entry = index.data(ChannelListModel::EntryRole).value<PlaylistEntry>();
    return secondLineOf(m_model.guide().schedule().onAt(entry.id, time), index);
}

QString ChannelRowDelegate::secondLineOf(const std::optional<GuideProgramme> &onNow,
                                         const QModelIndex &index)
{
    // A channel with a guide shows what is on now in place of its metadata.
    return onNow ? onNow->title : index.data(ChannelListModel::MetadataRole).toString();
}

void ChannelRowDelegate::paintProgress(QPainter *painter, const QRect &track,
                                       const GuideProgramme &programme, qint64 time) const
{
    const double length = double(std::max<qint64>(programme.stop - programme.start, 1));
    const double done = std::clamp(double(time - programme.start) / length, 0.0, 1.0);
    painter->fillRect(track, progressTrackColor);
    painter->fillRect(QRect(track.topLeft(), QSize(int(track.width() * done), track.height())),
                      progressColor);
}

QSize ChannelRowDelegate::sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const
{
    // No width of its own: a list view gives each row the width of its viewport, which changes
    // as the scroll bar comes and goes. A width taken from the viewport as it was when the rows
    // were laid out would outlast it, and the row's buttons would lie under the scroll bar.
    return {0, rowHeight};
}

bool ChannelRowDelegate::editorEvent(QEvent *event, QAbstractItemModel *,
                                     const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (event->type() != QEvent::MouseButtonRelease && event->type() != QEvent::MouseButtonDblClick)
        return false;
    const auto *mouse = static_cast<QMouseEvent *>(event);
    if (mouse->button() != Qt::LeftButton)
        return false;
    const auto entry = index.data(ChannelListModel::EntryRole).value<PlaylistEntry>();
    std::optional<ChannelRowAction> action = actionAt(option.rect, mouse->position().toPoint());
    // A double click anywhere else on the row plays it, as in every media list.
    if (event->type() == QEvent::MouseButtonDblClick)
        action = action ? std::nullopt : std::optional(ChannelRowAction::play);
    if (!action)
        return false;
    Q_EMIT actionTriggered(*action, entry);
    return true;
}

bool ChannelRowDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                                   const QStyleOptionViewItem &option, const QModelIndex &index)
{
    const std::optional<ChannelRowAction> action = actionAt(option.rect, event->pos());
    if (!action)
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    const auto entry = index.data(ChannelListModel::EntryRole).value<PlaylistEntry>();
    QToolTip::showText(event->globalPos(), helpText(*action, entry), view,
                       actionRect(option.rect, *action));
    return true;
}
