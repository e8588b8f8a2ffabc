#include "UI/LocalM3UPanel.h"

#include "Player/PlayerModel.h"
#include "Playlist/ChannelListModel.h"
#include "Playlist/LocalM3UActions.h"
#include "UI/ChannelFilterBar.h"
#include "UI/ChannelListView.h"
#include "UI/ChannelLogoLoader.h"
#include "UI/ChannelRowDelegate.h"
#include "UI/ContentState.h"
#include "UI/SymbolIcons.h"
#include "UI/WindowTexts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

LocalM3UPanel::LocalM3UPanel(PlayerModel &model, ContentState &state, LocalM3UActions &localM3U,
                             ChannelLogoLoader &logos, QWidget *parent)
    : QWidget(parent), m_localM3U(localM3U)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(10, 10, 10, 0);
    column->setSpacing(6);

    // The header row holds the list's own actions; the file row, choosing or changing the file.
    auto *headerRow = new QHBoxLayout;
    headerRow->setSpacing(4);
    auto *header = new QLabel(WindowTexts::localHeader.toString(), this);
    header->setObjectName(QStringLiteral("sectionHeader"));
    m_add = new QToolButton(this);
    m_add->setIcon(SymbolIcons::icon(u"plus"));
    m_add->setToolTip(WindowTexts::addLink.toString());
    m_add->setAutoRaise(true);
    m_clear = new QPushButton(SymbolIcons::icon(u"trash"), WindowTexts::clear.toString(), this);
    headerRow->addWidget(header, 1);
    headerRow->addWidget(m_clear);
    headerRow->addWidget(m_add);
    column->addLayout(headerRow);

    auto *fileRow = new QHBoxLayout;
    fileRow->setSpacing(4);
    m_file = new QPushButton(SymbolIcons::icon(u"doc.badge.arrow.up"), QString(), this);
    m_export = new QPushButton(SymbolIcons::icon(u"square.and.arrow.up"),
                               WindowTexts::exportLinks.toString(), this);
    fileRow->addWidget(m_file, 1);
    fileRow->addWidget(m_export);
    for (QPushButton *button : {m_export, m_clear, m_file})
        button->setObjectName(QStringLiteral("small"));
    column->addLayout(fileRow);

    m_filters = new ChannelFilterBar(state, WindowTexts::searchLocalLinks.toString(), this);
    column->addWidget(m_filters);

    m_content = new QStackedWidget(this);
    m_list = new ChannelListView(
        state.localLinks(),
        new ChannelRowDelegate(ChannelListModel::Rows::savedLinks, model, localM3U.store(), logos),
        m_content);
    m_empty = new QLabel(WindowTexts::noLocalLinks.toString(), m_content);
    m_empty->setObjectName(QStringLiteral("caption"));
    m_empty->setWordWrap(true);
    m_empty->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_content->addWidget(m_list);
    m_content->addWidget(m_empty);
    column->addWidget(m_content, 1);

    connect(m_add, &QToolButton::clicked, this, &LocalM3UPanel::addRequested);
    connect(m_export, &QPushButton::clicked, this, &LocalM3UPanel::exportRequested);
    connect(m_clear, &QPushButton::clicked, this, &LocalM3UPanel::clearRequested);
    connect(m_file, &QPushButton::clicked, this, &LocalM3UPanel::importRequested);
    connect(m_list, &ChannelListView::actionTriggered, this,
            [this, &model](ChannelRowAction action, const PlaylistEntry &entry) {
                switch (action) {
                case ChannelRowAction::play:
                    model.play(entry.url, entry.name, true);
                    break;
                case ChannelRowAction::edit:
                    Q_EMIT editRequested(entry);
                    break;
                case ChannelRowAction::remove:
                    Q_EMIT deleteRequested(entry);
                    break;
                case ChannelRowAction::save:
                    break;
                }
            });
    connect(&localM3U.store(), &LocalM3UStore::entriesChanged, this, &LocalM3UPanel::refresh);
    refresh();
}

void LocalM3UPanel::refresh()
{
    const bool empty = m_localM3U.store().entries().isEmpty();
    m_content->setCurrentWidget(empty ? static_cast<QWidget *>(m_empty) : m_list);
    // Importing a file replaces the saved links, so with links saved it is a change of file.
    m_file->setText(empty ? WindowTexts::chooseM3UFile.toString()
                          : WindowTexts::changeM3UFile.toString());
    m_export->setEnabled(!empty);
    m_clear->setEnabled(!empty);
}
