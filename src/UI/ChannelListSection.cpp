#include "UI/ChannelListSection.h"

#include "Player/PlayerModel.h"
#include "UI/ChannelFilterBar.h"
#include "UI/ChannelListView.h"
#include "UI/ChannelRowDelegate.h"
#include "UI/ContentState.h"
#include "UI/WindowTexts.h"

#include <QLabel>
#include <QStackedWidget>
#include <QVBoxLayout>

ChannelListSection::ChannelListSection(ChannelListModel::Rows rows, PlayerModel &model,
                                       ContentState &state, LocalM3UStore &store,
                                       ChannelLogoLoader &logos, const QString &emptyText,
                                       QWidget *parent)
    : QWidget(parent)
{
    const bool network = rows == ChannelListModel::Rows::networkChannels;
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(6);
    m_filters = new ChannelFilterBar(state,
                                     network ? WindowTexts::searchChannels.toString()
                                             : WindowTexts::searchLocalLinks.toString(),
                                     this);
    m_content = new QStackedWidget(this);
    m_list = new ChannelListView(network ? state.networkChannels() : state.localLinks(),
                                 new ChannelRowDelegate(rows, model, store, logos), m_content);
    m_empty = new QLabel(emptyText, m_content);
    m_empty->setObjectName(QStringLiteral("caption"));
    m_empty->setWordWrap(true);
    m_empty->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_content->addWidget(m_list);
    m_content->addWidget(m_empty);
    column->addWidget(m_filters);
    column->addWidget(m_content, 1);
    connect(m_list, &ChannelListView::actionTriggered, this,
            [this, &model](ChannelRowAction action, const PlaylistEntry &entry) {
                if (action == ChannelRowAction::play)
                    model.play(entry.url, entry.name, true);
                else
                    Q_EMIT actionTriggered(action, entry);
            });
}

void ChannelListSection::showEmptyText(bool shown)
{
    m_content->setCurrentWidget(shown ? static_cast<QWidget *>(m_empty) : m_list);
}
