#pragma once

#include "Surface/PortraitDisplayMode.h"
#include "UI/PlayerSidebarSection.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <optional>

class ChannelListModel;
class LocalM3UActions;
class PlayerModel;

// What the main window edits and shows besides the player's own state: the address and name
// fields with their automatic opening, the sidebar, the display mode, the full-screen controls
// and cursor timing, and the two channel lists with their shared search and filters. No widgets:
// the window's views read it and call it.
class ContentState : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString address READ address WRITE setAddress NOTIFY addressChanged)
    Q_PROPERTY(QString movieName READ movieName WRITE setMovieName NOTIFY movieNameChanged)
    Q_PROPERTY(
        bool showMovieName READ showMovieName WRITE setShowMovieName NOTIFY showMovieNameChanged)
    Q_PROPERTY(bool showSidebar READ showSidebar WRITE setShowSidebar NOTIFY showSidebarChanged)
    Q_PROPERTY(bool isFullScreen READ isFullScreen WRITE setFullScreen NOTIFY isFullScreenChanged)
    Q_PROPERTY(bool fullScreenControlsVisible READ fullScreenControlsVisible NOTIFY
                   fullScreenControlsVisibleChanged)
    Q_PROPERTY(
        QString channelSearch READ channelSearch WRITE setChannelSearch NOTIFY filtersChanged)

public:
    ContentState(PlayerModel &model, LocalM3UActions &localM3U, QObject *parent = nullptr);
    ~ContentState() override;

    const QString &address() const { return m_address; }
    // Every change is cleaned (line breaks removed, spaces and tabs trimmed); an emptied field
    // forgets the remembered network source; an http(s) address opens after a calm 0.45 s.
    void setAddress(const QString &address);
    // Return and the Play button: opens what the field holds now.
    void openStream();
    // The Clear button: empties the field and the channel list and stops network playback.
    void clearNetworkStream();

    const QString &movieName() const { return m_movieName; }
    // Follows into the player's title.
    void setMovieName(const QString &name);
    bool showMovieName() const { return m_showMovieName; }
    void setShowMovieName(bool show);

    std::optional<PlayerSidebarSection> selectedSidebarSection() const { return m_section; }
    void setSelectedSidebarSection(std::optional<PlayerSidebarSection> section);
    bool showSidebar() const { return m_showSidebar; }
    // The sidebar button's toggle, animated over 0.18 s.
    void setShowSidebar(bool show);
    // How long the newest change of the sidebar's visibility is animated.
    std::chrono::milliseconds sidebarAnimation() const { return m_sidebarAnimation; }
    PortraitDisplayMode portraitMode() const { return m_portraitMode; }
    // Choosing a portrait mode gives it the whole window: the sidebar hides.
    void selectDisplayMode(PortraitDisplayMode mode);

    bool isFullScreen() const { return m_isFullScreen; }
    void setFullScreen(bool fullScreen);
    bool fullScreenControlsVisible() const { return m_fullScreenControlsVisible; }
    // A click on the picture or a mouse move in full screen: the controls show for 2.5 s more.
    void showFullScreenControls();
    // A mouse move over the window; overPlayer tells whether it is over the picture.
    void noteMouseMoved(bool overPlayer);

    const QString &channelSearch() const { return m_channelSearch; }
    void setChannelSearch(const QString &search);
    const std::optional<QString> &selectedCountryCode() const { return m_countryCode; }
    void setSelectedCountryCode(const std::optional<QString> &code);
    const std::optional<QString> &selectedCategory() const { return m_category; }
    void setSelectedCategory(const std::optional<QString> &category);
    // Empties the search and clears both choices.
    void clearFilters();

    // The network panel's channels and the saved links. A playlist the player publishes is copied
    // into the network panel while that panel is shown; while the saved links are shown, a
    // non-empty one replaces them.
    ChannelListModel &networkChannels() { return *m_networkChannels; }
    ChannelListModel &localLinks() { return *m_localLinks; }
    // The list of the panel shown (the network one when none is chosen).
    ChannelListModel &displayedChannels();

Q_SIGNALS:
    void addressChanged();
    void movieNameChanged();
    void showMovieNameChanged();
    void selectedSidebarSectionChanged();
    void showSidebarChanged();
    void portraitModeChanged();
    void isFullScreenChanged();
    void fullScreenControlsVisibleChanged();
    void filtersChanged();
    // The cursor over the picture should hide until the mouse moves again.
    void cursorHideDue();
    // The full-screen transition has had its time: the window may rearrange.
    void fullScreenSettled();

private:
    static QString cleaned(const QString &text);
    void scheduleAutomaticOpen(const QString &text);
    void setControlsVisible(bool visible);
    std::optional<QString> movieNameToPass() const;
    void changeSidebar(bool show, std::chrono::milliseconds animation);
    void takePublishedPlaylist();
    void applyFilters();

    PlayerModel &m_model;
    LocalM3UActions &m_localM3U;
    QString m_address;
    QString m_movieName;
    bool m_showMovieName = false;
    std::optional<PlayerSidebarSection> m_section = PlayerSidebarSection::network;
    bool m_showSidebar = true;
    std::chrono::milliseconds m_sidebarAnimation{0};
    PortraitDisplayMode m_portraitMode = PortraitDisplayMode::normal;
    bool m_isFullScreen = false;
    bool m_fullScreenControlsVisible = true;
    QString m_channelSearch;
    std::optional<QString> m_countryCode;
    std::optional<QString> m_category;

    QTimer m_autoOpen;
    QString m_autoOpenAddress;
    QTimer m_controlsHide;
    QTimer m_cursorHide;
    QTimer m_fullScreenSettle;

    ChannelListModel *m_networkChannels;
    ChannelListModel *m_localLinks;
};
