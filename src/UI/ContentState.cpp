#include "UI/ContentState.h"

#include "Base/WebAddress.h"
#include "Player/PlayerModel.h"
#include "Player/RemoteAddress.h"
#include "Playlist/ChannelListModel.h"
#include "UI/LocalM3UActions.h"
#include "UI/WindowTiming.h"

ContentState::ContentState(PlayerModel &model, LocalM3UActions &localM3U, QObject *parent)
    : QObject(parent), m_model(model), m_localM3U(localM3U),
      m_networkChannels(new ChannelListModel(ChannelListModel::Rows::networkChannels, this)),
      m_localLinks(new ChannelListModel(ChannelListModel::Rows::savedLinks, this))
{
    // Precise: a coarse timer may fire up to 5 % early, and these delays are promises to the user.
    for (QTimer *timer : {&m_autoOpen, &m_controlsHide, &m_cursorHide, &m_fullScreenSettle})
        timer->setTimerType(Qt::PreciseTimer);
    m_autoOpen.setSingleShot(true);
    m_autoOpen.setInterval(WindowTiming::automaticOpenDelay);
    connect(&m_autoOpen, &QTimer::timeout, this, [this] {
        // Only if the field still names the address that was waited for.
        if (RemoteAddress::normalizedRemoteAddress(m_address) == m_autoOpenAddress)
            m_model.openRemote(m_autoOpenAddress, movieNameToPass());
    });
    m_controlsHide.setSingleShot(true);
    m_controlsHide.setInterval(WindowTiming::fullScreenControlsHideDelay);
    connect(&m_controlsHide, &QTimer::timeout, this, [this] { setControlsVisible(false); });
    m_cursorHide.setSingleShot(true);
    m_cursorHide.setInterval(WindowTiming::cursorHideDelay);
    connect(&m_cursorHide, &QTimer::timeout, this, &ContentState::cursorHideDue);
    m_fullScreenSettle.setSingleShot(true);
    m_fullScreenSettle.setInterval(WindowTiming::fullScreenSettleDelay);
    connect(&m_fullScreenSettle, &QTimer::timeout, this, [this] {
        if (m_isFullScreen)
            showFullScreenControls();
        else
            setControlsVisible(true);
        Q_EMIT fullScreenSettled();
    });

    connect(&m_model, &PlayerModel::playlistChanged, this, &ContentState::takePublishedPlaylist);
    LocalM3UStore &store = m_localM3U.store();
    connect(&store, &LocalM3UStore::entriesChanged, this,
            [this, &store] { m_localLinks->setEntries(store.entries()); });
    m_networkChannels->setEntries(m_model.playlist());
    m_localLinks->setEntries(store.entries());
}

ContentState::~ContentState() = default;

QString ContentState::cleaned(const QString &text)
{
    QString result = text;
    result.remove(QChar(13));
    result.remove(QChar(10));
    qsizetype start = 0;
    qsizetype end = result.size();
    const auto blank = [](QChar c) { return c == u' ' || c == u'\t'; };
    while (start < end && blank(result.at(start)))
        ++start;
    while (end > start && blank(result.at(end - 1)))
        --end;
    return result.mid(start, end - start);
}

void ContentState::setAddress(const QString &address)
{
    if (address == m_address)
        return;
    m_address = address;
    const QString clean = cleaned(address);
    if (clean != address) {
        // Writing the cleaned text back is itself a change, handled in full.
        m_address = QString();
        setAddress(clean);
        return;
    }
    Q_EMIT addressChanged();
    if (clean.isEmpty())
        m_model.discardLastRemoteSource();
    scheduleAutomaticOpen(clean);
}

void ContentState::scheduleAutomaticOpen(const QString &text)
{
    m_autoOpen.stop();
    const QString normalized = RemoteAddress::normalizedRemoteAddress(text);
    const std::optional<WebAddress> url = WebAddress::fromText(normalized);
    if (!url || !url->isWebAddress())
        return;
    m_autoOpenAddress = normalized;
    m_autoOpen.start();
}

void ContentState::openStream()
{
    m_autoOpen.stop();
    // From the event loop, as a separate task: the field's own signal handling finishes first.
    QTimer::singleShot(0, this, [this] { m_model.openRemote(m_address, movieNameToPass()); });
}

std::optional<QString> ContentState::movieNameToPass() const
{
    // A hidden name field is one the user put away: its old text must not name a new stream.
    return m_showMovieName ? std::optional(m_movieName) : std::nullopt;
}

void ContentState::clearNetworkStream()
{
    m_autoOpen.stop();
    m_address.clear();
    Q_EMIT addressChanged();
    m_model.clearNetworkStream();
}

void ContentState::setMovieName(const QString &name)
{
    if (name == m_movieName)
        return;
    m_movieName = name;
    Q_EMIT movieNameChanged();
    m_model.updateStreamTitle(name);
}

void ContentState::setShowMovieName(bool show)
{
    if (show == m_showMovieName)
        return;
    m_showMovieName = show;
    Q_EMIT showMovieNameChanged();
}

void ContentState::setSelectedSidebarSection(std::optional<PlayerSidebarSection> section)
{
    if (section == m_section)
        return;
    m_section = section;
    Q_EMIT selectedSidebarSectionChanged();
}

void ContentState::setShowSidebar(bool show)
{
    changeSidebar(show, WindowTiming::sidebarToggleAnimation);
}

void ContentState::changeSidebar(bool show, std::chrono::milliseconds animation)
{
    if (show == m_showSidebar)
        return;
    m_showSidebar = show;
    m_sidebarAnimation = animation;
    Q_EMIT showSidebarChanged();
}

void ContentState::takePublishedPlaylist()
{
    if (!m_section)
        return;
    if (*m_section == PlayerSidebarSection::network)
        m_networkChannels->setEntries(m_model.playlist());
    else
        m_localM3U.adoptPublishedPlaylist(m_model.playlist());
}

ChannelListModel &ContentState::displayedChannels()
{
    return m_section == PlayerSidebarSection::localM3U ? *m_localLinks : *m_networkChannels;
}

void ContentState::selectDisplayMode(PortraitDisplayMode mode)
{
    if (mode != m_portraitMode) {
        m_portraitMode = mode;
        Q_EMIT portraitModeChanged();
    }
    if (mode != PortraitDisplayMode::normal)
        changeSidebar(false, WindowTiming::sidebarPortraitAnimation);
}

void ContentState::setFullScreen(bool fullScreen)
{
    if (fullScreen == m_isFullScreen)
        return;
    m_isFullScreen = fullScreen;
    Q_EMIT isFullScreenChanged();
    m_fullScreenSettle.start();
}

void ContentState::setControlsVisible(bool visible)
{
    if (visible == m_fullScreenControlsVisible)
        return;
    m_fullScreenControlsVisible = visible;
    Q_EMIT fullScreenControlsVisibleChanged();
}

void ContentState::showFullScreenControls()
{
    m_controlsHide.stop();
    setControlsVisible(true);
    if (m_isFullScreen)
        m_controlsHide.start();
}

void ContentState::noteMouseMoved(bool overPlayer)
{
    showFullScreenControls();
    m_cursorHide.stop();
    if (m_model.isPlaying() && overPlayer)
        m_cursorHide.start();
}

void ContentState::setChannelSearch(const QString &search)
{
    if (search == m_channelSearch)
        return;
    m_channelSearch = search;
    applyFilters();
}

void ContentState::setSelectedCountryCode(const std::optional<QString> &code)
{
    if (code == m_countryCode)
        return;
    m_countryCode = code;
    applyFilters();
}

void ContentState::setSelectedCategory(const std::optional<QString> &category)
{
    if (category == m_category)
        return;
    m_category = category;
    applyFilters();
}

void ContentState::clearFilters()
{
    if (m_channelSearch.isEmpty() && !m_countryCode && !m_category)
        return;
    m_channelSearch.clear();
    m_countryCode.reset();
    m_category.reset();
    applyFilters();
}

void ContentState::applyFilters()
{
    for (ChannelListModel *list : {m_networkChannels, m_localLinks}) {
        list->setChannelSearch(m_channelSearch);
        list->setSelectedCountryCode(m_countryCode);
        list->setSelectedCategory(m_category);
    }
    Q_EMIT filtersChanged();
}
