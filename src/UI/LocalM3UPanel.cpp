#include "UI/LocalM3UPanel.h"

#include "Base/SymbolIcons.h"
#include "Player/PlayerModel.h"
#include "Playlist/ChannelListModel.h"
#include "UI/ChannelListSection.h"
#include "UI/ContentState.h"
#include "UI/LocalM3UActions.h"
#include "UI/WindowTexts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
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
    // Shown while a replaced list is kept: an import or a published list never loses the links.
    m_restore = new QPushButton(WindowTexts::restorePrevious.toString(), this);
    for (QPushButton *button : {m_export, m_clear, m_file, m_restore})
        button->setObjectName(QStringLiteral("small"));
    column->addLayout(fileRow);
    column->addWidget(m_restore);

    m_section =
        new ChannelListSection(ChannelListModel::Rows::savedLinks, model, state, localM3U.store(),
                               logos, WindowTexts::noLocalLinks.toString(), this);
    column->addWidget(m_section, 1);

    connect(m_add, &QToolButton::clicked, this, &LocalM3UPanel::addRequested);
    connect(m_export, &QPushButton::clicked, this, &LocalM3UPanel::exportRequested);
    connect(m_clear, &QPushButton::clicked, this, &LocalM3UPanel::clearRequested);
    connect(m_file, &QPushButton::clicked, this, &LocalM3UPanel::importRequested);
    connect(m_restore, &QPushButton::clicked, &localM3U, &LocalM3UActions::restorePreviousLinks);
    connect(&localM3U.store(), &LocalM3UStore::previousChanged, this, &LocalM3UPanel::refresh);
    connect(m_section, &ChannelListSection::actionTriggered, this,
            [this](ChannelRowAction action, const PlaylistEntry &entry) {
                if (action == ChannelRowAction::edit)
                    Q_EMIT editRequested(entry);
                else if (action == ChannelRowAction::remove)
                    Q_EMIT deleteRequested(entry);
            });
    connect(&localM3U.store(), &LocalM3UStore::entriesChanged, this, &LocalM3UPanel::refresh);
    refresh();
}

void LocalM3UPanel::refresh()
{
    const bool empty = m_localM3U.store().entries().isEmpty();
    m_section->showEmptyText(empty);
    // Importing a file replaces the saved links, so with links saved it is a change of file.
    m_file->setText(empty ? WindowTexts::chooseM3UFile.toString()
                          : WindowTexts::changeM3UFile.toString());
    m_export->setEnabled(!empty);
    m_restore->setVisible(m_localM3U.store().hasPrevious());
    m_clear->setEnabled(!empty);
}
