#pragma once

#include "Player/PlaybackFailure.h"
#include "Player/VideoPlacement.h"

#include <QFuture>
#include <QImage>
#include <QObject>
#include <QSize>
#include <QString>
#include <QThreadPool>

#include <atomic>
#include <cmath>
#include <initializer_list>
#include <limits>

struct mpv_handle;
struct mpv_event;
struct mpv_node;
struct mpv_render_context;
struct mpv_render_param;

// The media engine: one libmpv handle and the only code that speaks mpv's client API.
//
// Lives on the main thread. Every call returns at once (commands go out asynchronously), and
// mpv's observations come back through its wakeup callback, which only posts a drain of the event
// queue to this object's event loop; state is then cached here and announced with the signals
// below, never polled. The cache presents the engine like a player with a current item: there is
// media from load() until stop(), whether or not it could be opened.
class MpvEngine : public QObject
{
    Q_OBJECT

public:
    enum class Output
    {
        render,   // video through the render API, drawn by the video surface; system audio
        headless, // no video or audio output, for tests and measurements
    };

    explicit MpvEngine(Output output, QObject *parent = nullptr);
    ~MpvEngine() override;

    // False when libmpv could not be started; every command is then ignored.
    bool isValid() const { return m_handle != nullptr; }

    // Opens an absolute file path or an address and starts playing it, replacing what was loaded.
    // Anything else, and addresses of schemes outside MediaSchemes, fail without reaching mpv.
    void load(const QString &target);
    // Unloads the media; the engine stays ready for the next load.
    void stop();
    void setPaused(bool paused);
    // Seeks to the position in seconds, decoding up to the exact frame.
    void seekExact(double seconds);
    // 0 … 100, the engine's own scale.
    void setVolume(double percent);
    void setMuted(bool muted);
    // Where the picture goes in the target of the frames drawn from now on. Like every option
    // it reaches the renderer asynchronously, and mpv then asks for a frame to be drawn again.
    void setVideoPlacement(const VideoPlacement &placement);
    // The decoded picture of the frame shown now, scaled down to fit maxSide pixels by
    // averaging (so fine patterns do not alias into shapes that are not there); empty without
    // video. The one call that waits for mpv, which it does on a thread of the engine's own,
    // never on the caller's. Grabs run one after another.
    QFuture<QImage> grabVideoFrame(int maxSide);

    bool hasMedia() const { return m_hasMedia; }
    // Seconds; NaN while unknown. At the end of the media the position is the duration.
    double position() const;
    // Seconds; NaN while unknown and for live streams.
    double duration() const;
    // The displayed picture size (aspect correction applied); empty without video.
    QSize videoSize() const;
    bool isEndReached() const;
    bool hasFailed() const { return m_failed; }
    // Asked to play and able to: media loaded, not paused, not failed, not at the end.
    bool isPlaying() const;
    // Asked to play but no picture or sound advances: opening, waiting for data, seeking.
    bool isWaitingToPlay() const;

    // The video surface's access to the render API. Call with the surface's OpenGL context
    // current; free the context with it current too, and before this engine is destroyed
    // (aboutToShutDown() tells when). Loads requested before a render context exists wait for it,
    // since without one mpv would open a window of its own.
    int createRenderContext(mpv_render_context **context, mpv_render_param *parameters);
    // The surface freed its render context: later loads wait for the next one.
    void renderContextFreed();

    // Frames of the current media dropped by the decoder and by the video output.
    qint64 decoderDroppedFrames() const { return m_decoderDrops; }
    qint64 outputDroppedFrames() const { return m_outputDrops; }

Q_SIGNALS:
    // load() or stop() changed whether there is media.
    void hasMediaChanged();
    // load() was called: what was learnt of the media before no longer applies.
    void loadRequested();
    // Pause, idle, waiting, end of media or failure changed.
    void playbackStateChanged();
    void videoSizeChanged();
    void seekFinished();
    // The first frame after a load or a seek is decoded and playback runs from it.
    void framesReady();
    // The current media could not be opened or played.
    void loadFailed(PlaybackFailure failure);
    // Emitted before the handle goes away: free render contexts now.
    void aboutToShutDown();

private:
    // What the accessors show, to announce only real changes.
    struct Exposed
    {
        QSize videoSize;
        bool hasMedia;
        bool paused;
        bool endReached;
        bool failed;
        bool waiting;
    };

    void setOptions(Output output);
    void observeProperties();
    void fetchMediaProperties();
    // A new current load (or none): nothing is known of it yet, and nothing of the media before.
    void resetCurrentLoad(bool hasMedia);
    void forgetMediaProperties();
    void drainEvents();
    void handleEvent(const mpv_event &event);
    void storeProperty(quint64 id, const void *data, int format);
    void handleLoadReply(int error, const mpv_node &result);
    void handleEndFile(qint64 entryID, int reason, int error);
    void fail(int error);
    void command(std::initializer_list<const char *> arguments, quint64 tag = 0);
    void startPendingLoad();
    bool isCurrentLoaded() const { return m_hasMedia && m_currentLoaded; }
    Exposed exposed() const;
    void announceChanges(const Exposed &before);

    mpv_handle *m_handle = nullptr;
    Output m_output = Output::headless;
    bool m_renderReady = false;
    QString m_pendingLoad;
    std::atomic_bool m_drainQueued = false;

    bool m_hasMedia = false;
    bool m_failed = false;
    quint64 m_loadGeneration = 0;
    qint64 m_currentEntryID = -1;  // mpv's playlist entry of the current load, once known
    bool m_currentStarted = false; // mpv began opening that entry
    bool m_currentLoaded = false;  // and opened it: the cache below describes it

    // The observed properties: of the player always, of the media since it loaded.
    double m_position = std::numeric_limits<double>::quiet_NaN();
    double m_duration = std::numeric_limits<double>::quiet_NaN();
    qint64 m_displayWidth = 0;
    qint64 m_displayHeight = 0;
    bool m_paused = false;
    bool m_coreIdle = true;
    bool m_pausedForCache = false;
    bool m_endReached = false;
    qint64 m_decoderDrops = 0;
    qint64 m_outputDrops = 0;
    VideoPlacement m_placement; // as last asked of mpv
    QThreadPool m_grabThread;   // one thread; emptied before the handle goes
};
