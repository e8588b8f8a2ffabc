#include "UI/NetworkPanel.h"

#include "Base/SymbolIcons.h"
#include "Player/PlayerModel.h"
#include "Player/ProgrammeGuide.h"
#include "Playlist/ChannelListModel.h"
#include "UI/AddressField.h"
#include "UI/ChannelListSection.h"
#include "UI/ChannelListView.h"
#include "UI/ContentState.h"
#include "UI/GuideDayDialog.h"
#include "UI/GuideNowNextView.h"
#include "UI/LocalM3UActions.h"
#include "UI/WindowTexts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

QToolButton *fieldButton(QStringView symbol, QWidget *parent)
{
    auto *button = new QToolButton(parent);
    button->setIcon(SymbolIcons::icon(symbol));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}

} // namespace

NetworkPanel::NetworkPanel(PlayerModel &model, ContentState &state, LocalM3UActions &localM3U,
                           ChannelLogoLoader &logos, QWidget *parent)
    : QWidget(parent), m_model(model), m_state(state)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(10, 10, 10, 0);
    column->setSpacing(6);

    auto *addressRow = new QHBoxLayout;
    addressRow->setSpacing(2);
    m_address = new AddressField(this);
    m_address->setPlaceholderText(WindowTexts::addressPlaceholder.toString());
    m_nameToggle = fieldButton(u"textformat", this);
    m_nameToggle->setObjectName(QStringLiteral("movieNameToggle"));
    m_nameToggle->setCheckable(true);
    m_clear = fieldButton(u"xmark.circle", this);
    m_clear->setObjectName(QStringLiteral("clear"));
    m_clear->setToolTip(WindowTexts::clearHelp.toString());
    addressRow->addWidget(m_address, 1);
    addressRow->addWidget(m_nameToggle);
    addressRow->addWidget(m_clear);
    column->addLayout(addressRow);

    m_movieName = new QLineEdit(this);
    m_movieName->setObjectName(QStringLiteral("movieName"));
    m_movieName->setPlaceholderText(WindowTexts::movieNamePlaceholder.toString());
    column->addWidget(m_movieName);

    auto *playRow = new QHBoxLayout;
    m_play = new QPushButton(this);
    m_play->setObjectName(QStringLiteral("prominent"));
    m_play->setToolTip(WindowTexts::playHelp.toString());
    m_play->setIcon(SymbolIcons::icon(u"play.fill"));
    auto *caption = new QLabel(WindowTexts::addressCaption.toString(), this);
    caption->setObjectName(QStringLiteral("caption"));
    caption->setWordWrap(true);
    playRow->addWidget(m_play);
    playRow->addWidget(caption, 1);
    column->addLayout(playRow);

    m_channels = new QWidget(this);
    auto *channels = new QVBoxLayout(m_channels);
    channels->setContentsMargins(0, 8, 0, 0);
    channels->setSpacing(6);
    m_header = new QLabel(m_channels);
    m_header->setObjectName(QStringLiteral("sectionHeader"));
    m_section = new ChannelListSection(ChannelListModel::Rows::networkChannels, model, state,
                                       localM3U.store(), logos, {}, m_channels);
    auto *headerRow = new QHBoxLayout;
    headerRow->addWidget(m_header, 1);
    m_guideButton = fieldButton(u"list.bullet", m_channels);
    m_guideButton->setToolTip(WindowTexts::guideViewHelp.toString());
    headerRow->addWidget(m_guideButton);
    channels->addLayout(headerRow);
    m_nowNext = new GuideNowNextView(model, m_channels);
    channels->addWidget(m_nowNext);
    channels->addWidget(m_section, 1);
    column->addWidget(m_channels, 1);
    column->addStretch(0);

    // Every change of the field, typed, pasted or dropped, goes through the window's cleaning.
    connect(m_address, &QLineEdit::textChanged, this,
            [this](const QString &text) { m_state.setAddress(text); });
    connect(m_address, &QLineEdit::returnPressed, &m_state, &ContentState::openStream);
    connect(m_address, &AddressField::filesDropped, this, &NetworkPanel::filesDropped);
    connect(m_play, &QPushButton::clicked, &m_state, &ContentState::openStream);
    connect(m_clear, &QToolButton::clicked, &m_state, &ContentState::clearNetworkStream);
    connect(m_nameToggle, &QToolButton::clicked, this,
            [this] { m_state.setShowMovieName(!m_state.showMovieName()); });
    connect(m_movieName, &QLineEdit::textChanged, this,
            [this](const QString &text) { m_state.setMovieName(text); });
    connect(m_section, &ChannelListSection::actionTriggered, this,
            [&localM3U](ChannelRowAction action, const PlaylistEntry &entry) {
                if (action == ChannelRowAction::save)
                    localM3U.saveToLocalM3U(entry);
            });

    connect(&m_state, &ContentState::addressChanged, this, &NetworkPanel::refreshAddress);
    connect(&m_state, &ContentState::movieNameChanged, this, &NetworkPanel::refreshMovieName);
    connect(&m_state, &ContentState::showMovieNameChanged, this, &NetworkPanel::refreshMovieName);
    connect(&m_model, &PlayerModel::isLoadingChanged, this, &NetworkPanel::refreshPlayButton);
    connect(&m_model, &PlayerModel::isLoadingChanged, this, &NetworkPanel::refreshChannels);
    ChannelListModel &list = state.networkChannels();
    connect(&list, &ChannelListModel::rowsSettled, this, &NetworkPanel::refreshChannels);
    connect(&list, &ChannelListModel::isFilteringChanged, this, &NetworkPanel::refreshChannels);
    connect(&m_model.guide(), &ProgrammeGuide::scheduleChanged, this,
            &NetworkPanel::refreshChannels);
    connect(m_guideButton, &QToolButton::clicked, this, &NetworkPanel::showGuideOfSelection);
    refreshAddress();
    refreshMovieName();
    refreshPlayButton();
    refreshChannels();
}

void NetworkPanel::refreshAddress()
{
    if (m_address->text() != m_state.address())
        m_address->setText(m_state.address());
}

void NetworkPanel::refreshMovieName()
{
    const bool shown = m_state.showMovieName();
    m_movieName->setVisible(shown);
    m_nameToggle->setChecked(shown);
    m_nameToggle->setToolTip(shown ? WindowTexts::hideMovieNameHelp.toString()
                                   : WindowTexts::showMovieNameHelp.toString());
    if (m_movieName->text() != m_state.movieName())
        m_movieName->setText(m_state.movieName());
}

void NetworkPanel::refreshPlayButton()
{
    m_play->setText(m_model.isLoading() ? WindowTexts::loading.toString()
                                        : WindowTexts::play.toString());
}

void NetworkPanel::refreshChannels()
{
    const ChannelListModel &list = m_state.networkChannels();
    // Shown from the start of a playlist's load until it has failed, not only once the list has
    // come: a load empties the list first, and the section hidden and shown again would lay out a
    // long list within the same step as it arrives. A section already shown lays it out later, in
    // a step of its own.
    m_channels->setVisible(!list.entries().isEmpty() || m_model.isLoading() || list.isFiltering());
    m_header->setText(WindowTexts::channelsHeader.toString() +
                      QString::number(list.filteredCount()));
    m_guideButton->setVisible(!m_model.guide().schedule().isEmpty());
}

std::optional<PlaylistEntry> NetworkPanel::guideChannel() const
{
    const QModelIndex selected = channelList()->currentIndex();
    if (selected.isValid())
        return m_state.networkChannels().entryAt(selected.row());
    if (const PlaylistEntry *playing = m_model.playingEntry())
        return *playing;
    return std::nullopt;
}

void NetworkPanel::showGuideOfSelection()
{
    if (const std::optional<PlaylistEntry> channel = guideChannel())
        (new GuideDayDialog(m_model, *channel, window()))->show();
}
