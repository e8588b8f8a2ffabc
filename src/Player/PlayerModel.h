#pragma once

#include "Base/WebAddress.h"
#include "Player/LastPlayableSource.h"
#include "Player/MpvEngine.h"
#include "Player/ProgrammeGuide.h"
#include "Playlist/PlaylistEntry.h"
#include "Playlist/PlaylistReadResult.h"
#include "Web/OKVideoContent.h"
#include "Web/YouTubeContent.h"

#include <QFuture>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QUuid>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

class MediaFileChooser;
class NetworkThread;
class OKVideoPlayerRegistry;
class WebPlayerRegistry;
class YouTubePlayerRegistry;

// The one object that holds the state of playback and carries out every transport action.
//
// Exactly one source is active: a YouTube video (youtubeContent present), an OK.ru video
// (okVideoContent present), or else media played by the engine. Transport actions test them in that
// order and send web players their script commands through the registries.
//
// Main thread only. Every notify signal is emitted only on a real change. Optional values are
// std::optional; absent means "none" to every reader.
class PlayerModel : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString title READ title NOTIFY titleChanged)
    Q_PROPERTY(std::optional<QString> errorMessage READ errorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(QList<PlaylistEntry> playlist READ playlist NOTIFY playlistChanged)
    Q_PROPERTY(bool isPlaying READ isPlaying NOTIFY isPlayingChanged)
    Q_PROPERTY(double currentTime READ currentTime NOTIFY currentTimeChanged)
    Q_PROPERTY(double duration READ duration NOTIFY durationChanged)
    Q_PROPERTY(double volume READ volume NOTIFY volumeChanged)
    Q_PROPERTY(bool isMuted READ isMuted NOTIFY isMutedChanged)
    Q_PROPERTY(double videoAspectRatio READ videoAspectRatio NOTIFY videoAspectRatioChanged)
    Q_PROPERTY(QUuid mediaLoadID READ mediaLoadID NOTIFY mediaLoadIDChanged)
    Q_PROPERTY(std::optional<QUuid> videoAspectMediaLoadID READ videoAspectMediaLoadID NOTIFY
                   videoAspectMediaLoadIDChanged)
    Q_PROPERTY(bool isLiveStream READ isLiveStream NOTIFY isLiveStreamChanged)
    Q_PROPERTY(bool isBuffering READ isBuffering NOTIFY isBufferingChanged)
    Q_PROPERTY(std::optional<YouTubeContent> youtubeContent READ youtubeContent NOTIFY
                   youtubeContentChanged)
    Q_PROPERTY(std::optional<OKVideoContent> okVideoContent READ okVideoContent NOTIFY
                   okVideoContentChanged)
    Q_PROPERTY(std::optional<QString> toastMessage READ toastMessage NOTIFY toastMessageChanged)
    Q_PROPERTY(std::optional<WebAddress> currentURL READ currentURL NOTIFY currentURLChanged)
    Q_PROPERTY(
        std::optional<QString> playbackFailure READ playbackFailure NOTIFY playbackFailureChanged)

public:
    using PlaylistImport = QFuture<std::optional<QList<PlaylistEntry>>>;

    // Web videos get their script commands through the two registries, which outlive the model.
    PlayerModel(YouTubePlayerRegistry &youtubePlayers, OKVideoPlayerRegistry &okVideoPlayers,
                MpvEngine::Output output = MpvEngine::Output::render, QObject *parent = nullptr);
    ~PlayerModel() override;

    // The one engine; never replaced. The video surface draws from it.
    MpvEngine &engine() { return m_engine; }
    // The programme guide of the published playlist.
    ProgrammeGuide &guide() { return m_guide; }

    const QString &title() const { return m_title; }
    const std::optional<QString> &errorMessage() const { return m_errorMessage; }
    // Why the media last asked for does not play ("Could not play “NAME”: reason."), shown over
    // the picture until dismissed or until other media is asked for; nothing while it plays.
    const std::optional<QString> &playbackFailure() const { return m_playbackFailure; }
    bool isLoading() const { return m_isLoading; }
    const QList<PlaylistEntry> &playlist() const { return m_playlist; }
    // The channel of the playlist that is playing, if any.
    const PlaylistEntry *playingEntry() const;
    bool isPlaying() const { return m_isPlaying; }
    double currentTime() const { return m_currentTime; }
    double duration() const { return m_duration; }
    double volume() const { return m_volume; }
    bool isMuted() const { return m_isMuted; }
    double videoAspectRatio() const { return m_videoAspectRatio; }
    const QUuid &mediaLoadID() const { return m_mediaLoadID; }
    const std::optional<QUuid> &videoAspectMediaLoadID() const { return m_videoAspectMediaLoadID; }
    bool isLiveStream() const { return m_isLiveStream; }
    bool isBuffering() const { return m_isBuffering; }
    const std::optional<YouTubeContent> &youtubeContent() const { return m_youtubeContent; }
    const std::optional<OKVideoContent> &okVideoContent() const { return m_okVideoContent; }
    const std::optional<QString> &toastMessage() const { return m_toastMessage; }
    const std::optional<WebAddress> &currentURL() const { return m_currentURL; }
    // The identity of the newest remote request or import; older playlist loads are dropped.
    const QUuid &remoteRequestID() const { return m_remoteRequestID; }
    // What Play starts when nothing is loaded.
    const std::optional<LastPlayableSource> &lastPlayableSource() const
    {
        return m_lastPlayableSource;
    }

    // Where openFile() and importLocalM3U() ask for a file; without one they do nothing.
    void setFileChooser(MediaFileChooser *chooser) { m_fileChooser = chooser; }
    // How long a playlist download may go without progress (20 s unless changed).
    void setPlaylistTimeout(std::chrono::milliseconds timeout) { m_playlistTimeout = timeout; }
    // How long a network stream may wait for data before it has failed (20 s unless changed).
    void setStreamDataTimeout(std::chrono::milliseconds timeout)
    {
        m_streamDataTimer.setInterval(timeout);
    }

    // Starts a file or stream. A present but empty displayName is used as the title as it is;
    // without one the title is the address's decoded last path component.
    void play(const WebAddress &url, const std::optional<QString> &displayName, bool isLiveStream);
    void openFile();
    void stop();
    void togglePlayback();
    void skip(double seconds);
    // To that position of the engine's media, exactly; nothing without media.
    void seek(double seconds);
    void setVolume(double value);
    void adjustVolume(double delta);
    void toggleMute();
    void showToast(const QString &message, std::uint64_t durationNanoseconds);
    // Hides the notice of a failed playback.
    void dismissPlaybackFailure() { clearPlaybackFailure(); }
    void updateStreamTitle(const QString &name);

    // Plays, shows or loads what the typed text names: a YouTube or OK.ru video, an IPTV
    // playlist, or a stream. The future finishes when the source is started or the playlist load
    // has ended (also when it ended as superseded).
    QFuture<void> openRemote(QStringView address, const std::optional<QString> &displayName);
    void replayLastSourceOrShowToast();
    void discardLastRemoteSource();
    void clearNetworkStream();

    // Asks for a playlist file and imports it (see importLocalM3UFile); a cancelled dialog gives
    // nothing at once.
    PlaylistImport importLocalM3U(const std::optional<QString> &displayName);
    // Reads, decodes and parses the file off the main thread and publishes its channels. The
    // future gives the entries, or nothing when the import failed (the message is in
    // errorMessage and the channel list is emptied) or a newer request superseded it.
    PlaylistImport importLocalM3UFile(const QString &path,
                                      const std::optional<QString> &displayName);

Q_SIGNALS:
    void titleChanged();
    void errorMessageChanged();
    void isLoadingChanged();
    void playlistChanged();
    void isPlayingChanged();
    void currentTimeChanged();
    void durationChanged();
    void volumeChanged();
    void isMutedChanged();
    void videoAspectRatioChanged();
    void mediaLoadIDChanged();
    void videoAspectMediaLoadIDChanged();
    void isLiveStreamChanged();
    void isBufferingChanged();
    void youtubeContentChanged();
    void okVideoContentChanged();
    void toastMessageChanged();
    void currentURLChanged();
    void playbackFailureChanged();

private:
    // The registry of the web player that is the active source; nothing when the engine is.
    WebPlayerRegistry *activeWebPlayer() const;

    void timeTick();
    void refreshBufferingState();
    // Watches a network stream that waits for data: after the time-out without any, it failed.
    void refreshStreamDataWatch();
    void reportPlaybackFailure(PlaybackFailure failure);
    void clearPlaybackFailure();
    void showBufferingIndicatorAfterDelay();
    void hideBufferingIndicator();
    void showWebContent(const std::optional<YouTubeContent> &youtube,
                        const std::optional<OKVideoContent> &okVideo, const QString &title);
    QFuture<void> loadM3U(const WebAddress &url, const std::optional<QString> &displayName,
                          const QUuid &requestID);
    void publishLoadedPlaylist(const QUuid &requestID, const PlaylistReadResult &result,
                               const std::optional<QString> &displayName);

    template <typename T>
    void assign(T &field, const T &value, void (PlayerModel::*changed)());
    // Publishes a new list, and its guide from the keys and the guides it names; the list it
    // replaces is freed off the main thread.
    void setPlaylist(QList<PlaylistEntry> playlist, const ChannelGuideKeys &guideKeys = {},
                     const QList<WebAddress> &guides = {});

    // Declared first so it outlives every timer and download that refers to it.
    MpvEngine m_engine;
    // Playlists and guides arrive on a thread of their own.
    std::shared_ptr<NetworkThread> m_network;
    ProgrammeGuide m_guide;
    QTimer m_timeTickTimer;
    QTimer m_bufferingIndicatorTimer;
    QTimer m_toastTimer;
    QTimer m_streamDataTimer;
    MediaFileChooser *m_fileChooser = nullptr;
    YouTubePlayerRegistry &m_youtubePlayers;
    OKVideoPlayerRegistry &m_okVideoPlayers;
    std::chrono::milliseconds m_playlistTimeout;

    QString m_title;
    std::optional<QString> m_errorMessage;
    std::optional<QString> m_playbackFailure;
    bool m_isLoading = false;
    QList<PlaylistEntry> m_playlist;
    bool m_isPlaying = false;
    double m_currentTime = 0;
    double m_duration = 0;
    double m_volume = 1.0;
    bool m_isMuted = false;
    double m_videoAspectRatio = 0;
    QUuid m_mediaLoadID;
    std::optional<QUuid> m_videoAspectMediaLoadID;
    bool m_isLiveStream = false;
    bool m_isBuffering = false;
    std::optional<YouTubeContent> m_youtubeContent;
    std::optional<OKVideoContent> m_okVideoContent;
    std::optional<QString> m_toastMessage;
    std::optional<WebAddress> m_currentURL;
    QUuid m_remoteRequestID;
    std::optional<LastPlayableSource> m_lastPlayableSource;
};
