#include "Player/PlayerModel.h"

#include "Base/AppIdentity.h"
#include "Base/BackgroundRelease.h"
#include "Base/BackgroundTask.h"
#include "Base/OptionalText.h"
#include "Player/MediaFileChooser.h"
#include "Player/PlayerTexts.h"
#include "Player/PlayerTiming.h"
#include "Player/RemoteAddress.h"
#include "Playlist/NetworkThread.h"
#include "Playlist/PlaylistDownload.h"
#include "Playlist/PlaylistReader.h"
#include "Web/OKVideoPlayerRegistry.h"
#include "Web/WebPlayerRegistry.h"
#include "Web/WebPlayerScript.h"
#include "Web/YouTubePlayerRegistry.h"

#include <QFileInfo>
#include <QPromise>

#include <algorithm>
#include <climits>
#include <cmath>
#include <memory>

namespace {
QString placeholderTitle()
{
    return AppIdentity::displayName.toString();
}

bool sameAspect(double a, double b)
{
    return std::fabs(a - b) <= 0.001;
}
} // namespace

PlayerModel::PlayerModel(YouTubePlayerRegistry &youtubePlayers,
                         OKVideoPlayerRegistry &okVideoPlayers, MpvEngine::Output output,
                         QObject *parent)
    : QObject(parent), m_engine(output), m_network(std::make_shared<NetworkThread>()),
      m_guide(m_network), m_youtubePlayers(youtubePlayers), m_okVideoPlayers(okVideoPlayers),
      m_playlistTimeout(PlayerTiming::playlistTimeout), m_title(placeholderTitle()),
      m_mediaLoadID(QUuid::createUuid()), m_remoteRequestID(QUuid::createUuid())
{
    m_timeTickTimer.setInterval(PlayerTiming::timeTick);
    connect(&m_timeTickTimer, &QTimer::timeout, this, &PlayerModel::timeTick);

    m_bufferingIndicatorTimer.setSingleShot(true);
    m_bufferingIndicatorTimer.setInterval(PlayerTiming::bufferingIndicatorDelay);
    connect(&m_bufferingIndicatorTimer, &QTimer::timeout, this, [this] {
        if (m_isLiveStream && m_engine.isWaitingToPlay())
            assign(m_isBuffering, true, &PlayerModel::isBufferingChanged);
    });

    connect(&m_guide, &ProgrammeGuide::notice, this,
            [this](const QString &message) { showToast(message, PlayerTiming::toastNanoseconds); });

    m_toastTimer.setSingleShot(true);
    connect(&m_toastTimer, &QTimer::timeout, this, [this] {
        assign(m_toastMessage, std::optional<QString>(), &PlayerModel::toastMessageChanged);
    });

    m_streamDataTimer.setSingleShot(true);
    m_streamDataTimer.setTimerType(Qt::PreciseTimer);
    m_streamDataTimer.setInterval(PlayerTiming::streamDataTimeout);
    connect(&m_streamDataTimer, &QTimer::timeout, this,
            [this] { reportPlaybackFailure(PlaybackFailure::noData); });

    // A change of play state is a time discontinuity as well: sample at once, so the clock and
    // the play button do not lag a quarter second behind a pause, a stall or the end.
    connect(&m_engine, &MpvEngine::playbackStateChanged, this, [this] {
        refreshBufferingState();
        refreshStreamDataWatch();
        timeTick();
    });
    connect(&m_engine, &MpvEngine::loadFailed, this, &PlayerModel::reportPlaybackFailure);
    connect(&m_engine, &MpvEngine::seekFinished, this, &PlayerModel::timeTick);

    m_engine.setVolume(m_volume * 100);
    m_engine.setMuted(m_isMuted);
}

PlayerModel::~PlayerModel()
{
    m_engine.disconnect(this);
}

template <typename T>
void PlayerModel::assign(T &field, const T &value, void (PlayerModel::*changed)())
{
    if (field == value)
        return;
    field = value;
    Q_EMIT(this->*changed)();
}

void PlayerModel::setPlaylist(QList<PlaylistEntry> playlist, const ChannelGuideKeys &guideKeys,
                              const QList<WebAddress> &guides)
{
    if (playlist == m_playlist)
        return;
    m_playlist.swap(playlist);
    m_guide.setPlaylist(m_playlist, guideKeys, guides);
    Q_EMIT playlistChanged();
    releaseInBackground(std::move(playlist));
}

const PlaylistEntry *PlayerModel::playingEntry() const
{
    if (!m_currentURL)
        return nullptr;
    const auto found =
        std::find_if(m_playlist.cbegin(), m_playlist.cend(),
                     [this](const PlaylistEntry &e) { return e.url == *m_currentURL; });
    return found == m_playlist.cend() ? nullptr : &*found;
}

WebPlayerRegistry *PlayerModel::activeWebPlayer() const
{
    if (m_youtubeContent)
        return &m_youtubePlayers;
    if (m_okVideoContent)
        return &m_okVideoPlayers;
    return nullptr;
}

void PlayerModel::timeTick()
{
    // The web players report nothing back: their time and duration keep their last values.
    if (m_youtubeContent || m_okVideoContent)
        return;
    const double position = m_engine.position();
    assign(m_currentTime, std::isfinite(position) ? position : 0.0,
           &PlayerModel::currentTimeChanged);
    const double duration = m_engine.duration();
    assign(m_duration, m_engine.hasMedia() && std::isfinite(duration) ? duration : 0.0,
           &PlayerModel::durationChanged);
    assign(m_isPlaying, m_engine.isPlaying(), &PlayerModel::isPlayingChanged);

    const QSize size = m_engine.videoSize();
    if (!m_engine.hasMedia() || size.width() <= 0 || size.height() <= 0)
        return;
    // Written only when the shape really changes or belongs to a new load, so the window fitting
    // that listens is not woken four times a second.
    const double ratio = double(size.width()) / double(size.height());
    if (!sameAspect(m_videoAspectRatio, ratio) || m_videoAspectMediaLoadID != m_mediaLoadID) {
        assign(m_videoAspectRatio, ratio, &PlayerModel::videoAspectRatioChanged);
        assign(m_videoAspectMediaLoadID, std::optional<QUuid>(m_mediaLoadID),
               &PlayerModel::videoAspectMediaLoadIDChanged);
    }
}

void PlayerModel::play(const WebAddress &url, const std::optional<QString> &displayName,
                       bool isLiveStream)
{
    assign(m_currentURL, std::optional<WebAddress>(url), &PlayerModel::currentURLChanged);
    assign(m_videoAspectRatio, 0.0, &PlayerModel::videoAspectRatioChanged);
    assign(m_videoAspectMediaLoadID, std::optional<QUuid>(),
           &PlayerModel::videoAspectMediaLoadIDChanged);
    assign(m_mediaLoadID, QUuid::createUuid(), &PlayerModel::mediaLoadIDChanged);
    assign(m_youtubeContent, std::optional<YouTubeContent>(), &PlayerModel::youtubeContentChanged);
    assign(m_okVideoContent, std::optional<OKVideoContent>(), &PlayerModel::okVideoContentChanged);
    assign(m_errorMessage, std::optional<QString>(), &PlayerModel::errorMessageChanged);
    clearPlaybackFailure();

    QString title;
    if (displayName)
        title = *displayName;
    else
        title = url.lastPathComponent().value_or(url.text());
    assign(m_title, title, &PlayerModel::titleChanged);
    m_lastPlayableSource = LastPlayableSource{LastPlayableSource::Media{url, title, isLiveStream}};
    assign(m_isLiveStream, isLiveStream, &PlayerModel::isLiveStreamChanged);
    hideBufferingIndicator();

    m_engine.load(url.isLocalFile() ? url.toLocalFile() : url.text());
    m_timeTickTimer.start();
    assign(m_isPlaying, true, &PlayerModel::isPlayingChanged);
}

void PlayerModel::openFile()
{
    if (!m_fileChooser)
        return;
    const std::optional<QString> path = m_fileChooser->chooseMediaFile();
    if (!path)
        return;
    const QFileInfo file(*path);
    play(WebAddress::fromLocalFile(file.absoluteFilePath()), file.fileName(), false);
}

void PlayerModel::stop()
{
    assign(m_currentURL, std::optional<WebAddress>(), &PlayerModel::currentURLChanged);
    m_engine.stop();
    m_timeTickTimer.stop();
    assign(m_currentTime, 0.0, &PlayerModel::currentTimeChanged);
    assign(m_duration, 0.0, &PlayerModel::durationChanged);
    assign(m_videoAspectRatio, 0.0, &PlayerModel::videoAspectRatioChanged);
    assign(m_videoAspectMediaLoadID, std::optional<QUuid>(),
           &PlayerModel::videoAspectMediaLoadIDChanged);
    assign(m_isPlaying, false, &PlayerModel::isPlayingChanged);
    assign(m_title, placeholderTitle(), &PlayerModel::titleChanged);
    assign(m_youtubeContent, std::optional<YouTubeContent>(), &PlayerModel::youtubeContentChanged);
    assign(m_okVideoContent, std::optional<OKVideoContent>(), &PlayerModel::okVideoContentChanged);
    assign(m_isLiveStream, false, &PlayerModel::isLiveStreamChanged);
    hideBufferingIndicator();
    m_streamDataTimer.stop();
    clearPlaybackFailure();
}

void PlayerModel::togglePlayback()
{
    if (WebPlayerRegistry *web = activeWebPlayer()) {
        // The page is not asked: its state is the model's own assumption.
        web->evaluate(WebPlayerScript::toggle(web->service()));
        assign(m_isPlaying, !m_isPlaying, &PlayerModel::isPlayingChanged);
        return;
    }
    if (!m_engine.hasMedia()) {
        replayLastSourceOrShowToast();
        return;
    }
    m_engine.setPaused(m_engine.isPlaying());
    assign(m_isPlaying, m_engine.isPlaying(), &PlayerModel::isPlayingChanged);
}

void PlayerModel::skip(double seconds)
{
    if (!std::isfinite(seconds))
        return;
    if (WebPlayerRegistry *web = activeWebPlayer()) {
        web->evaluate(WebPlayerScript::skip(web->service(), seconds));
        return;
    }
    // Never past the end, never before the start; a live stream (duration 0) goes to 0.
    if (m_engine.hasMedia())
        m_engine.seekExact(std::max(std::min(m_currentTime + seconds, m_duration), 0.0));
}

void PlayerModel::seek(double seconds)
{
    if (std::isfinite(seconds) && m_engine.hasMedia())
        m_engine.seekExact(std::max(seconds, 0.0));
}

void PlayerModel::setVolume(double value)
{
    if (std::isnan(value))
        return;
    const double level = std::clamp(value, 0.0, 1.0);
    assign(m_volume, level, &PlayerModel::volumeChanged);
    assign(m_isMuted, level == 0, &PlayerModel::isMutedChanged);
    if (WebPlayerRegistry *web = activeWebPlayer()) {
        web->evaluate(WebPlayerScript::setVolume(web->service(), level));
        return;
    }
    m_engine.setVolume(level * 100);
    m_engine.setMuted(m_isMuted);
}

void PlayerModel::adjustVolume(double delta)
{
    if (std::isnan(delta))
        return;
    // The volume moves on a grid of hundredths, so repeated steps never drift.
    const double level = std::clamp(std::round((m_volume + delta) * 100) / 100, 0.0, 1.0);
    setVolume(level);
    const QString message = level != 0
                                ? PlayerTexts::volumePercent.toString().arg(qRound(level * 100))
                                : PlayerTexts::volumeMuted.toString();
    showToast(message, PlayerTiming::volumeToastNanoseconds);
}

void PlayerModel::toggleMute()
{
    const bool muted = !m_isMuted;
    assign(m_isMuted, muted, &PlayerModel::isMutedChanged);
    if (WebPlayerRegistry *web = activeWebPlayer())
        web->setMuted(muted);
    else
        m_engine.setMuted(muted);
}

void PlayerModel::showToast(const QString &message, std::uint64_t durationNanoseconds)
{
    // Starting the timer again cancels the older toast's removal: a newer toast replaces the
    // older one and gets its own full time.
    assign(m_toastMessage, std::optional<QString>(message), &PlayerModel::toastMessageChanged);
    const std::uint64_t milliseconds = (durationNanoseconds + 999'999) / 1'000'000;
    m_toastTimer.start(int(std::min<std::uint64_t>(milliseconds, INT_MAX)));
}

void PlayerModel::updateStreamTitle(const QString &name)
{
    if (!m_isLiveStream)
        return;
    const QString trimmed = name.trimmed();
    assign(m_title, trimmed.isEmpty() ? placeholderTitle() : trimmed, &PlayerModel::titleChanged);
}

void PlayerModel::refreshBufferingState()
{
    if (!m_isLiveStream || !m_engine.hasMedia() || !m_engine.isWaitingToPlay()) {
        hideBufferingIndicator();
        return;
    }
    showBufferingIndicatorAfterDelay();
}

void PlayerModel::refreshStreamDataWatch()
{
    const bool waitingForNetwork = m_engine.hasMedia() && m_engine.isWaitingToPlay() &&
                                   m_currentURL && !m_currentURL->isLocalFile();
    if (!waitingForNetwork) {
        m_streamDataTimer.stop();
        return;
    }
    if (!m_streamDataTimer.isActive())
        m_streamDataTimer.start();
}

void PlayerModel::reportPlaybackFailure(PlaybackFailure failure)
{
    if (!m_currentURL)
        return;
    m_streamDataTimer.stop();
    const QString name = m_title.isEmpty() ? m_currentURL->text() : m_title;
    assign(m_playbackFailure,
           std::optional(PlaybackFailures::notice(failure, name, m_currentURL->isLocalFile())),
           &PlayerModel::playbackFailureChanged);
}

void PlayerModel::clearPlaybackFailure()
{
    assign(m_playbackFailure, std::optional<QString>(), &PlayerModel::playbackFailureChanged);
}

void PlayerModel::showBufferingIndicatorAfterDelay()
{
    if (m_isBuffering || m_bufferingIndicatorTimer.isActive())
        return;
    m_bufferingIndicatorTimer.start();
}

void PlayerModel::hideBufferingIndicator()
{
    m_bufferingIndicatorTimer.stop();
    assign(m_isBuffering, false, &PlayerModel::isBufferingChanged);
}

QFuture<void> PlayerModel::openRemote(QStringView address,
                                      const std::optional<QString> &displayName)
{
    m_remoteRequestID = QUuid::createUuid();
    const QUuid requestID = m_remoteRequestID;
    const RemoteTarget target = RemoteAddress::classify(address);
    if (target.kind == RemoteTarget::Kind::invalid) {
        assign(m_errorMessage, std::optional<QString>(PlayerTexts::invalidRemoteAddress.toString()),
               &PlayerModel::errorMessageChanged);
        return QtFuture::makeReadyFuture();
    }
    assign(m_errorMessage, std::optional<QString>(), &PlayerModel::errorMessageChanged);
    setPlaylist({});
    const std::optional<QString> name = trimmedText(displayName);
    const QString title = name.value_or(placeholderTitle());

    switch (target.kind) {
    case RemoteTarget::Kind::youtube:
    case RemoteTarget::Kind::okVideo:
        // A web video's shape is known to be 16:9, so the window can be fitted at once.
        assign(m_mediaLoadID, QUuid::createUuid(), &PlayerModel::mediaLoadIDChanged);
        assign(m_videoAspectRatio, 16.0 / 9.0, &PlayerModel::videoAspectRatioChanged);
        assign(m_videoAspectMediaLoadID, std::optional<QUuid>(m_mediaLoadID),
               &PlayerModel::videoAspectMediaLoadIDChanged);
        if (target.youtube)
            m_lastPlayableSource =
                LastPlayableSource{LastPlayableSource::YouTube{*target.youtube, title}};
        else
            m_lastPlayableSource =
                LastPlayableSource{LastPlayableSource::OKVideo{*target.okVideo, title}};
        showWebContent(target.youtube, target.okVideo, title);
        return QtFuture::makeReadyFuture();
    case RemoteTarget::Kind::playlist:
        assign(m_youtubeContent, std::optional<YouTubeContent>(),
               &PlayerModel::youtubeContentChanged);
        assign(m_okVideoContent, std::optional<OKVideoContent>(),
               &PlayerModel::okVideoContentChanged);
        return loadM3U(target.url, name, requestID);
    case RemoteTarget::Kind::stream:
        assign(m_isLoading, false, &PlayerModel::isLoadingChanged);
        play(target.url, name, target.isLiveStream);
        return QtFuture::makeReadyFuture();
    case RemoteTarget::Kind::invalid:
        break;
    }
    Q_UNREACHABLE();
}

void PlayerModel::showWebContent(const std::optional<YouTubeContent> &youtube,
                                 const std::optional<OKVideoContent> &okVideo, const QString &title)
{
    // The engine gives up its media so that only the web player sounds; currentURL stays, and a
    // pending buffering delay is left to find the stream gone.
    m_engine.stop();
    m_timeTickTimer.stop();
    m_streamDataTimer.stop();
    clearPlaybackFailure();
    assign(m_youtubeContent, youtube, &PlayerModel::youtubeContentChanged);
    assign(m_okVideoContent, okVideo, &PlayerModel::okVideoContentChanged);
    assign(m_title, title, &PlayerModel::titleChanged);
    assign(m_isLiveStream, false, &PlayerModel::isLiveStreamChanged);
    assign(m_isBuffering, false, &PlayerModel::isBufferingChanged);
    assign(m_currentTime, 0.0, &PlayerModel::currentTimeChanged);
    assign(m_duration, 0.0, &PlayerModel::durationChanged);
    assign(m_isPlaying, true, &PlayerModel::isPlayingChanged);
}

void PlayerModel::replayLastSourceOrShowToast()
{
    if (!m_lastPlayableSource) {
        showToast(PlayerTexts::nothingToPlay.toString(), PlayerTiming::toastNanoseconds);
        return;
    }
    // A copy: play() replaces the remembered source while it runs.
    const LastPlayableSource last = *m_lastPlayableSource;
    if (const auto *media = std::get_if<LastPlayableSource::Media>(&last.source))
        play(media->url, media->title, media->isLiveStream);
    else if (const auto *youtube = std::get_if<LastPlayableSource::YouTube>(&last.source))
        showWebContent(youtube->content, std::nullopt, youtube->title);
    else if (const auto *okVideo = std::get_if<LastPlayableSource::OKVideo>(&last.source))
        showWebContent(std::nullopt, okVideo->content, okVideo->title);
}

void PlayerModel::discardLastRemoteSource()
{
    if (m_lastPlayableSource) {
        const auto *media = std::get_if<LastPlayableSource::Media>(&m_lastPlayableSource->source);
        if (media && media->url.isLocalFile())
            return;
    }
    m_lastPlayableSource.reset();
}

void PlayerModel::clearNetworkStream()
{
    setPlaylist({});
    assign(m_errorMessage, std::optional<QString>(), &PlayerModel::errorMessageChanged);
    assign(m_isLoading, false, &PlayerModel::isLoadingChanged);
    discardLastRemoteSource();
    stop();
}

QFuture<void> PlayerModel::loadM3U(const WebAddress &url, const std::optional<QString> &displayName,
                                   const QUuid &requestID)
{
    assign(m_isLoading, true, &PlayerModel::isLoadingChanged);
    auto promise = std::make_shared<QPromise<void>>();
    promise->start();
    auto *download = new PlaylistDownload(m_network, url, m_playlistTimeout, this);
    connect(download, &PlaylistDownload::finished, this,
            [this, url, displayName, requestID, promise](const QByteArray &body,
                                                         const QString &failure) {
                if (requestID != m_remoteRequestID || !failure.isEmpty()) {
                    // A superseded load is not parsed at all.
                    if (!failure.isEmpty())
                        publishLoadedPlaylist(requestID, PlaylistReadResult::failed(failure),
                                              displayName);
                    promise->finish();
                    return;
                }
                // Decoding and parsing take a while for big lists; the event loop goes on.
                runInBackground(
                    this, [body, url] { return PlaylistReader::read(body, url); },
                    [this, requestID, displayName, promise](const PlaylistReadResult &result) {
                        publishLoadedPlaylist(requestID, result, displayName);
                        promise->finish();
                    });
            });
    return promise->future();
}

void PlayerModel::publishLoadedPlaylist(const QUuid &requestID, const PlaylistReadResult &result,
                                        const std::optional<QString> &displayName)
{
    // A load that a newer request superseded ends silently; the newer one owns isLoading.
    if (requestID != m_remoteRequestID)
        return;
    if (result.succeeded()) {
        setPlaylist(result.entries, result.guideKeys, result.guideAddresses);
        assign(m_title,
               trimmedText(displayName).value_or(PlayerTexts::networkPlaylistTitle.toString()),
               &PlayerModel::titleChanged);
    } else {
        assign(m_errorMessage,
               std::optional<QString>(PlayerTexts::playlistOpenFailed.toString() + result.failure),
               &PlayerModel::errorMessageChanged);
    }
    assign(m_isLoading, false, &PlayerModel::isLoadingChanged);
}

PlayerModel::PlaylistImport PlayerModel::importLocalM3U(const std::optional<QString> &displayName)
{
    const std::optional<QString> path =
        m_fileChooser ? m_fileChooser->choosePlaylistFile() : std::nullopt;
    if (!path)
        return QtFuture::makeReadyFuture(std::optional<QList<PlaylistEntry>>());
    return importLocalM3UFile(*path, displayName);
}

PlayerModel::PlaylistImport
PlayerModel::importLocalM3UFile(const QString &path, const std::optional<QString> &displayName)
{
    // Any network load still under way is superseded now, and its spinner goes at once.
    m_remoteRequestID = QUuid::createUuid();
    const QUuid requestID = m_remoteRequestID;
    assign(m_errorMessage, std::optional<QString>(), &PlayerModel::errorMessageChanged);
    assign(m_isLoading, false, &PlayerModel::isLoadingChanged);

    return runInBackground(
        this, [path] { return PlaylistReader::readFile(path); },
        [this, path, displayName,
         requestID](const PlaylistReadResult &result) -> std::optional<QList<PlaylistEntry>> {
            if (requestID != m_remoteRequestID)
                return std::nullopt;
            if (!result.succeeded()) {
                setPlaylist({});
                assign(m_errorMessage,
                       std::optional<QString>(PlayerTexts::playlistImportFailed.toString() +
                                              result.failure),
                       &PlayerModel::errorMessageChanged);
                return std::nullopt;
            }
            const QFileInfo file(path);
            const QString fileTitle =
                file.completeBaseName().isEmpty() ? file.fileName() : file.completeBaseName();
            setPlaylist(result.entries, result.guideKeys, result.guideAddresses);
            assign(m_title, trimmedText(displayName).value_or(fileTitle),
                   &PlayerModel::titleChanged);
            return result.entries;
        });
}
