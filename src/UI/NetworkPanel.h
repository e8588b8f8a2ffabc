#pragma once

#include "UI/ChannelListSection.h"

#include "Playlist/PlaylistEntry.h"

#include <QList>
#include <QUrl>
#include <QWidget>

class AddressField;
class GuideNowNextView;
class ChannelLogoLoader;
class ContentState;
class LocalM3UActions;
class PlayerModel;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

// The sidebar's network panel: the address field with the optional name field, Play and Clear,
// and under them the channels of the playlist last loaded, with search and filters, what is on
// the channel playing, and the guide of the channel selected.
class NetworkPanel : public QWidget
{
    Q_OBJECT

public:
    NetworkPanel(PlayerModel &model, ContentState &state, LocalM3UActions &localM3U,
                 ChannelLogoLoader &logos, QWidget *parent = nullptr);

    AddressField *addressField() const { return m_address; }
    QToolButton *movieNameToggle() const { return m_nameToggle; }
    QLineEdit *movieNameField() const { return m_movieName; }
    QPushButton *playButton() const { return m_play; }
    QToolButton *clearButton() const { return m_clear; }
    QLabel *channelsHeader() const { return m_header; }
    QToolButton *guideButton() const { return m_guideButton; }
    GuideNowNextView *nowNext() const { return m_nowNext; }
    ChannelFilterBar *filters() const { return m_section->filters(); }
    ChannelListView *channelList() const { return m_section->list(); }

Q_SIGNALS:
    void filesDropped(const QList<QUrl> &files);

private:
    void refreshAddress();
    void refreshMovieName();
    void refreshPlayButton();
    void refreshChannels();
    // The channel whose day the guide button shows: the one selected, else the one playing.
    std::optional<PlaylistEntry> guideChannel() const;
    void showGuideOfSelection();

    PlayerModel &m_model;
    ContentState &m_state;
    AddressField *m_address;
    QToolButton *m_nameToggle;
    QLineEdit *m_movieName;
    QPushButton *m_play;
    QToolButton *m_clear;
    QLabel *m_header;
    QToolButton *m_guideButton;
    GuideNowNextView *m_nowNext;
    ChannelListSection *m_section;
    QWidget *m_channels;
};
