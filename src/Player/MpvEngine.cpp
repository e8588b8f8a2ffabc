#include "Player/MpvEngine.h"

#include "Base/AppIdentity.h"
#include "Player/MediaSchemes.h"

#include <mpv/client.h>
#include <mpv/render.h>

#include <QByteArray>
#include <QMetaObject>
#include <QtConcurrent/QtConcurrentRun>

#include <clocale>
#include <initializer_list>
#include <utility>
#include <vector>

namespace {

// What an mpv error means to the user who asked for the media.
PlaybackFailure failureOf(int error)
{
    switch (error) {
    case MPV_ERROR_LOADING_FAILED:
        return PlaybackFailure::cannotOpen;
    case MPV_ERROR_UNKNOWN_FORMAT:
        return PlaybackFailure::unknownFormat;
    case MPV_ERROR_NOTHING_TO_PLAY:
        return PlaybackFailure::nothingToPlay;
    case MPV_ERROR_UNSUPPORTED:
        return PlaybackFailure::unsupported;
    default:
        return PlaybackFailure::other;
    }
}

// Reply tags of asynchronous requests whose outcome matters. Tags of a load and of the property
// reads after it carry the load's generation, so replies about replaced media are recognised and
// ignored.
constexpr quint64 untagged = 0;
constexpr quint64 seekTag = 1;
constexpr quint64 loadTagBase = quint64(1) << 48;
constexpr quint64 fetchTagBase = quint64(2) << 48;

quint64 fetchTag(quint64 generation, quint64 propertyID)
{
    return fetchTagBase + (generation << 8) + propertyID;
}

// A screenshot-raw result ("bgr0": blue, green, red and a byte left over, as Qt's RGB32 lays
// out a pixel in memory) scaled to fit maxSide; empty when it is not one.
QImage scaledScreenshot(const mpv_node &result, int maxSide)
{
    if (result.format != MPV_FORMAT_NODE_MAP)
        return {};
    qint64 width = 0, height = 0, stride = 0;
    QByteArray format;
    const mpv_byte_array *data = nullptr;
    const mpv_node_list *map = result.u.list;
    for (int i = 0; i < map->num; ++i) {
        const QByteArray key(map->keys[i]);
        const mpv_node &value = map->values[i];
        if (value.format == MPV_FORMAT_INT64 && key == "w")
            width = value.u.int64;
        else if (value.format == MPV_FORMAT_INT64 && key == "h")
            height = value.u.int64;
        else if (value.format == MPV_FORMAT_INT64 && key == "stride")
            stride = value.u.int64;
        else if (value.format == MPV_FORMAT_STRING && key == "format")
            format = value.u.string;
        else if (value.format == MPV_FORMAT_BYTE_ARRAY && key == "data")
            data = value.u.ba;
    }
    if (format != "bgr0" || !data || width <= 0 || height <= 0 || stride < width * 4 ||
        qint64(data->size) < stride * height)
        return {};
    const QImage frame(static_cast<const uchar *>(data->data), int(width), int(height),
                       qsizetype(stride), QImage::Format_RGB32);
    // A deep copy, made before mpv's memory is freed.
    return frame.scaled(maxSide, maxSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

// The observed properties, by the id mpv reports back.
enum PropertyID : quint64
{
    timePosID = 1,
    durationID,
    pauseID,
    coreIdleID,
    pausedForCacheID,
    eofReachedID,
    displayWidthID,
    displayHeightID,
    decoderDropsID,
    outputDropsID,
};

struct ObservedProperty
{
    PropertyID id;
    const char *name;
    mpv_format format;
    bool describesMedia; // a value of the loaded media, not of the player
};

constexpr ObservedProperty observedProperties[] = {
    {timePosID, "time-pos", MPV_FORMAT_DOUBLE, true},
    {durationID, "duration", MPV_FORMAT_DOUBLE, true},
    {pauseID, "pause", MPV_FORMAT_FLAG, false},
    {coreIdleID, "core-idle", MPV_FORMAT_FLAG, false},
    {pausedForCacheID, "paused-for-cache", MPV_FORMAT_FLAG, false},
    {eofReachedID, "eof-reached", MPV_FORMAT_FLAG, true},
    {displayWidthID, "dwidth", MPV_FORMAT_INT64, true},
    {displayHeightID, "dheight", MPV_FORMAT_INT64, true},
    {decoderDropsID, "frame-drop-count", MPV_FORMAT_INT64, true},
    {outputDropsID, "vo-drop-frame-count", MPV_FORMAT_INT64, true},
};

const ObservedProperty *observedProperty(quint64 id)
{
    for (const ObservedProperty &property : observedProperties) {
        if (property.id == id)
            return &property;
    }
    return nullptr;
}

constexpr double unknown = std::numeric_limits<double>::quiet_NaN();

void setOption(mpv_handle *handle, const char *name, const QByteArray &value)
{
    mpv_set_option_string(handle, name, value.constData());
}
} // namespace

MpvEngine::MpvEngine(Output output, QObject *parent) : QObject(parent)
{
    m_grabThread.setMaxThreadCount(1);
    // libmpv refuses to start unless numbers are formatted with a "." (it parses and prints
    // option values with the C library). The setting is process-wide; the engine is created on
    // the main thread after the application object, which resets it from the environment.
    std::setlocale(LC_NUMERIC, "C");
    m_handle = mpv_create();
    if (!m_handle)
        return;
    setOptions(output);
    if (mpv_initialize(m_handle) < 0) {
        mpv_terminate_destroy(m_handle);
        m_handle = nullptr;
        return;
    }
    m_renderReady = output == Output::headless;
    m_output = output;
    observeProperties();
    mpv_set_wakeup_callback(
        m_handle,
        [](void *context) {
            // Called on any of mpv's threads, possibly re-entrantly: only post the drain, and only
            // once until it has run, so a burst of events costs one queued call.
            auto *engine = static_cast<MpvEngine *>(context);
            if (!engine->m_drainQueued.exchange(true))
                QMetaObject::invokeMethod(engine, &MpvEngine::drainEvents, Qt::QueuedConnection);
        },
        this);
}

MpvEngine::~MpvEngine()
{
    if (!m_handle)
        return;
    Q_EMIT aboutToShutDown();
    // A grab under way still uses the handle.
    m_grabThread.waitForDone();
    mpv_set_wakeup_callback(m_handle, nullptr, nullptr);
    mpv_terminate_destroy(m_handle);
}

void MpvEngine::setOptions(Output output)
{
    // The player behaves the same on every machine: a user's mpv.conf, scripts or key bindings
    // must not change what this program does.
    setOption(m_handle, "config", "no");
    setOption(m_handle, "input-default-bindings", "no");
    setOption(m_handle, "input-vo-keyboard", "no");
    setOption(m_handle, "load-scripts", "no");
    setOption(m_handle, "osc", "no");
    // Video goes to our own surface; the engine never opens a window of its own.
    setOption(m_handle, "vo", output == Output::render ? "libmpv" : "null");
    if (output == Output::headless)
        setOption(m_handle, "ao", "null");
    // mpv hands over each frame when it is due instead of early: drawing then never sleeps on the
    // window's thread waiting for a frame's time, which would stall every other event for up to a
    // frame's length.
    setOption(m_handle, "video-timing-offset", "0");
    setOption(m_handle, "force-window", "no");
    // Web videos are played by the embedded web players, never through youtube-dl.
    setOption(m_handle, "ytdl", "no");
    // Hardware decoding where it is known to be reliable, software decoding otherwise.
    setOption(m_handle, "hwdec", "auto-safe");
    // Frames grabbed for analysis are converted by mpv itself, on its own thread, never through
    // the renderer, which runs on the window's thread. The plain converter does it in a fifth of
    // the time of the exact one; nothing the user sees goes through it.
    setOption(m_handle, "screenshot-sw", "yes");
    setOption(m_handle, "sws-allow-zimg", "no");
    setOption(m_handle, "sws-fast", "yes");
    // The engine stays alive without media, and at the end of a file it keeps the last picture
    // and stops there, the clock at the duration, instead of unloading it.
    setOption(m_handle, "idle", "yes");
    setOption(m_handle, "keep-open", "yes");
    // Cover art of audio files is not a video: the picture area stays empty for audio.
    setOption(m_handle, "audio-display", "no");
    // Servers see who asks; a dead server gives up after as long as a playlist download does.
    setOption(m_handle, "user-agent", AppIdentity::userAgent().toUtf8());
    setOption(m_handle, "network-timeout", "20");
    // Network streams and live channels read ahead, bounded in memory: 64 MiB ahead is minutes of
    // HD video, 16 MiB behind allows short jumps back without a new request. When the cache runs
    // dry playback pauses until a second is buffered again, so a stall is one pause, not a
    // stutter; that pause is what the buffering indicator shows.
    setOption(m_handle, "cache", "auto");
    setOption(m_handle, "demuxer-max-bytes", "64MiB");
    setOption(m_handle, "demuxer-max-back-bytes", "16MiB");
    setOption(m_handle, "cache-pause", "yes");
    setOption(m_handle, "cache-pause-wait", "1");
    // Pulse and PipeWire list the program under its own name.
    setOption(m_handle, "audio-client-name", AppIdentity::applicationName.toUtf8());
}

void MpvEngine::observeProperties()
{
    for (const ObservedProperty &property : observedProperties)
        mpv_observe_property(m_handle, property.id, property.name, property.format);
}

void MpvEngine::fetchMediaProperties()
{
    // mpv reports an observed property only when it differs from its last report, and the
    // reports around a load may still be about the old media. Reading each value of the new
    // media once, after it loaded, makes the cache right whatever was reported before.
    for (const ObservedProperty &property : observedProperties) {
        if (property.describesMedia)
            mpv_get_property_async(m_handle, fetchTag(m_loadGeneration, property.id), property.name,
                                   property.format);
    }
}

void MpvEngine::resetCurrentLoad(bool hasMedia)
{
    m_hasMedia = hasMedia;
    m_failed = false;
    m_currentEntryID = -1;
    m_currentLoaded = false;
    forgetMediaProperties();
}

void MpvEngine::forgetMediaProperties()
{
    m_position = unknown;
    m_duration = unknown;
    m_displayWidth = 0;
    m_displayHeight = 0;
    m_endReached = false;
    m_decoderDrops = 0;
    m_outputDrops = 0;
}

int MpvEngine::createRenderContext(mpv_render_context **context, mpv_render_param *parameters)
{
    if (!m_handle)
        return MPV_ERROR_UNINITIALIZED;
    const int result = mpv_render_context_create(context, m_handle, parameters);
    if (result >= 0) {
        m_renderReady = true;
        startPendingLoad();
    }
    return result;
}

void MpvEngine::renderContextFreed()
{
    // Without a render context mpv would open a window of its own for the next video.
    m_renderReady = m_output == Output::headless;
}

void MpvEngine::command(std::initializer_list<const char *> arguments, quint64 tag)
{
    if (!m_handle)
        return;
    std::vector<const char *> list(arguments);
    list.push_back(nullptr);
    mpv_command_async(m_handle, tag, list.data());
}

void MpvEngine::load(const QString &target)
{
    const Exposed before = exposed();
    resetCurrentLoad(true);
    m_pendingLoad = target;
    if (m_renderReady)
        startPendingLoad();
    announceChanges(before);
    Q_EMIT loadRequested();
}

void MpvEngine::startPendingLoad()
{
    if (m_pendingLoad.isNull() || !m_handle)
        return;
    const QString pending = std::exchange(m_pendingLoad, QString());
    ++m_loadGeneration;
    if (!MediaSchemes::isPlayableTarget(pending)) {
        command({"stop"});
        fail(MPV_ERROR_UNSUPPORTED);
        Q_EMIT playbackStateChanged();
        return;
    }
    const QByteArray target = pending.toUtf8();
    command({"loadfile", target.constData(), "replace"}, loadTagBase + m_loadGeneration);
    setPaused(false);
}

void MpvEngine::stop()
{
    m_pendingLoad = QString();
    if (!m_hasMedia)
        return;
    const Exposed before = exposed();
    resetCurrentLoad(false);
    ++m_loadGeneration;
    command({"stop"});
    announceChanges(before);
}

MpvEngine::Exposed MpvEngine::exposed() const
{
    return {videoSize(), m_hasMedia, m_paused, isEndReached(), m_failed, isWaitingToPlay()};
}

void MpvEngine::announceChanges(const Exposed &before)
{
    const Exposed after = exposed();
    if (before.hasMedia != after.hasMedia)
        Q_EMIT hasMediaChanged();
    if (before.videoSize != after.videoSize)
        Q_EMIT videoSizeChanged();
    if (before.paused != after.paused || before.endReached != after.endReached ||
        before.failed != after.failed || before.waiting != after.waiting)
        Q_EMIT playbackStateChanged();
}

void MpvEngine::setPaused(bool paused)
{
    if (!m_handle)
        return;
    // The request counts at once, as a player's rate does; mpv's echo confirms it.
    if (m_paused != paused) {
        m_paused = paused;
        Q_EMIT playbackStateChanged();
    }
    int flag = paused ? 1 : 0;
    mpv_set_property_async(m_handle, untagged, "pause", MPV_FORMAT_FLAG, &flag);
}

void MpvEngine::seekExact(double seconds)
{
    const QByteArray target = QByteArray::number(seconds, 'f', 6);
    command({"seek", target.constData(), "absolute+exact"}, seekTag);
}

void MpvEngine::setVolume(double percent)
{
    if (!m_handle)
        return;
    mpv_set_property_async(m_handle, untagged, "volume", MPV_FORMAT_DOUBLE, &percent);
}

void MpvEngine::setVideoPlacement(const VideoPlacement &placement)
{
    if (!m_handle || placement == m_placement)
        return;
    m_placement = placement;
    const std::pair<const char *, double> options[] = {{"video-zoom", placement.zoom},
                                                       {"video-align-x", placement.alignX},
                                                       {"video-align-y", placement.alignY},
                                                       {"video-pan-x", placement.panX},
                                                       {"video-pan-y", placement.panY}};
    for (auto [name, value] : options)
        mpv_set_property_async(m_handle, untagged, name, MPV_FORMAT_DOUBLE, &value);
}

QFuture<QImage> MpvEngine::grabVideoFrame(int maxSide)
{
    if (!m_handle)
        return QtFuture::makeReadyFuture(QImage());
    return QtConcurrent::run(&m_grabThread, [handle = m_handle, maxSide] {
        const char *command[] = {"screenshot-raw", "video", nullptr};
        mpv_node result{};
        if (mpv_command_ret(handle, command, &result) < 0)
            return QImage();
        const QImage picture = scaledScreenshot(result, maxSide);
        mpv_free_node_contents(&result);
        return picture;
    });
}

void MpvEngine::setMuted(bool muted)
{
    if (!m_handle)
        return;
    int flag = muted ? 1 : 0;
    mpv_set_property_async(m_handle, untagged, "mute", MPV_FORMAT_FLAG, &flag);
}

double MpvEngine::position() const
{
    if (!isCurrentLoaded())
        return unknown;
    if (m_endReached && !std::isnan(m_duration))
        return m_duration;
    return m_position;
}

double MpvEngine::duration() const
{
    return isCurrentLoaded() ? m_duration : unknown;
}

QSize MpvEngine::videoSize() const
{
    if (!isCurrentLoaded() || m_displayWidth <= 0 || m_displayHeight <= 0)
        return {};
    return QSize(int(m_displayWidth), int(m_displayHeight));
}

bool MpvEngine::isEndReached() const
{
    return isCurrentLoaded() && m_endReached;
}

bool MpvEngine::isPlaying() const
{
    return m_hasMedia && !m_paused && !m_failed && !isEndReached();
}

bool MpvEngine::isWaitingToPlay() const
{
    // core-idle: mpv is not advancing although not paused by us (opening, cache ran dry, seek).
    return isPlaying() && (!isCurrentLoaded() || m_coreIdle || m_pausedForCache);
}

void MpvEngine::drainEvents()
{
    m_drainQueued = false;
    // Every event is turned into cached values and signals before the next mpv_wait_event call,
    // which invalidates it.
    while (m_handle) {
        const mpv_event *event = mpv_wait_event(m_handle, 0);
        if (event->event_id == MPV_EVENT_NONE || event->event_id == MPV_EVENT_SHUTDOWN)
            return;
        const Exposed before = exposed();
        handleEvent(*event);
        announceChanges(before);
    }
}

void MpvEngine::handleEvent(const mpv_event &event)
{
    switch (event.event_id) {
    case MPV_EVENT_PROPERTY_CHANGE: {
        // Values of the media count only once the current media has loaded; before that they
        // describe the media it replaced, and the reads sent at the load bring the fresh ones.
        const ObservedProperty *observed = observedProperty(event.reply_userdata);
        if (observed && (!observed->describesMedia || isCurrentLoaded())) {
            const auto *property = static_cast<const mpv_event_property *>(event.data);
            storeProperty(event.reply_userdata, property->data, property->format);
        }
        return;
    }
    case MPV_EVENT_GET_PROPERTY_REPLY:
        if ((event.reply_userdata >> 8) == (fetchTag(m_loadGeneration, 0) >> 8)) {
            const auto *property = static_cast<const mpv_event_property *>(event.data);
            const bool ok = event.error >= 0;
            storeProperty(event.reply_userdata & 0xff, ok ? property->data : nullptr,
                          ok ? property->format : MPV_FORMAT_NONE);
        }
        return;
    case MPV_EVENT_START_FILE:
        m_currentStarted =
            static_cast<const mpv_event_start_file *>(event.data)->playlist_entry_id ==
            m_currentEntryID;
        return;
    case MPV_EVENT_FILE_LOADED:
        // Events are ordered: a load replaced before it got here was already told apart by its
        // entry id at its start.
        if (m_currentStarted && m_hasMedia && !m_currentLoaded) {
            m_currentLoaded = true;
            fetchMediaProperties();
        }
        return;
    case MPV_EVENT_PLAYBACK_RESTART:
        if (isCurrentLoaded())
            Q_EMIT framesReady();
        return;
    case MPV_EVENT_END_FILE: {
        const auto *end = static_cast<const mpv_event_end_file *>(event.data);
        handleEndFile(end->playlist_entry_id, end->reason, end->error);
        return;
    }
    case MPV_EVENT_COMMAND_REPLY:
        if (event.reply_userdata == seekTag)
            Q_EMIT seekFinished();
        else if (event.reply_userdata == loadTagBase + m_loadGeneration)
            handleLoadReply(event.error,
                            static_cast<const mpv_event_command *>(event.data)->result);
        return;
    default:
        return;
    }
}

void MpvEngine::storeProperty(quint64 id, const void *data, int format)
{
    // MPV_FORMAT_NONE: the property is unavailable (no file, no video), data is invalid.
    const bool available = format != MPV_FORMAT_NONE && data;
    const auto flag = [&] { return available && *static_cast<const int *>(data) != 0; };
    const auto number = [&] { return available ? *static_cast<const double *>(data) : unknown; };
    const auto integer = [&] { return available ? *static_cast<const qint64 *>(data) : 0; };
    switch (id) {
    case timePosID:
        m_position = number();
        return;
    case durationID:
        m_duration = number();
        return;
    case pauseID:
        m_paused = flag();
        return;
    case coreIdleID:
        m_coreIdle = flag();
        return;
    case pausedForCacheID:
        m_pausedForCache = flag();
        return;
    case eofReachedID:
        m_endReached = flag();
        return;
    case displayWidthID:
        m_displayWidth = integer();
        return;
    case displayHeightID:
        m_displayHeight = integer();
        return;
    case decoderDropsID:
        m_decoderDrops = integer();
        return;
    case outputDropsID:
        m_outputDrops = integer();
        return;
    default:
        return;
    }
}

void MpvEngine::handleLoadReply(int error, const mpv_node &result)
{
    if (!m_hasMedia)
        return;
    if (error < 0) {
        // The load never started, so no end-of-file event will report it.
        fail(error);
        return;
    }
    // The reply names the playlist entry of this load, which tells its events from those of the
    // media it replaced; mpv sends the reply before any event of the new entry.
    if (result.format != MPV_FORMAT_NODE_MAP)
        return;
    const mpv_node_list *map = result.u.list;
    for (int i = 0; i < map->num; ++i) {
        if (qstrcmp(map->keys[i], "playlist_entry_id") == 0 &&
            map->values[i].format == MPV_FORMAT_INT64)
            m_currentEntryID = map->values[i].u.int64;
    }
}

void MpvEngine::fail(int error)
{
    m_failed = true;
    Q_EMIT loadFailed(failureOf(error));
}

void MpvEngine::handleEndFile(qint64 entryID, int reason, int error)
{
    // Ends of media that a newer load replaced, and of a stop, are not news.
    if (entryID != m_currentEntryID || !m_hasMedia)
        return;
    if (reason == MPV_END_FILE_REASON_ERROR) {
        fail(error);
    } else if (reason == MPV_END_FILE_REASON_EOF) {
        // Without keep-open support (some streams end this way) the media is gone: it ended.
        m_endReached = true;
    }
}
