#pragma once

#include <QObject>
#include <QSize>
#include <QString>

#include <atomic>
#include <cmath>
#include <initializer_list>
#include <limits>

struct mpv_handle;
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

    // Opens a file path or an address and starts playing it, replacing what was loaded.
    void load(const QString &target);
    // Unloads the media; the engine stays ready for the next load.
    void stop();
    void setPaused(bool paused);
    // Seeks to the position in seconds, decoding up to the exact frame.
    void seekExact(double seconds);
    // 0 … 100, the engine's own scale.
    void setVolume(double percent);
    void setMuted(bool muted);

    bool hasMedia() const { return m_hasMedia; }
    // Seconds; NaN while unknown. At the end of the media the position is the duration.
    double position() const;
    // Seconds; NaN while unknown and for live streams.
    double duration() const { return m_duration; }
    // The displayed picture size (aspect correction applied); empty without video.
    QSize videoSize() const { return m_videoSize; }
    bool isPaused() const { return m_paused; }
    bool isEndReached() const { return m_endReached; }
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

Q_SIGNALS:
    // Pause, idle, waiting, end of media or failure changed.
    void playbackStateChanged();
    void durationChanged();
    void videoSizeChanged();
    void seekFinished();
    // The current media could not be opened or played; description is mpv's reason.
    void loadFailed(const QString &description);
    // Emitted before the handle goes away: free render contexts now.
    void aboutToShutDown();

private:
    void setOptions(Output output);
    void observeProperties();
    void drainEvents();
    void handlePropertyChange(quint64 id, const void *data, int format);
    void handleLoadReply(int error, const mpv_node &result);
    void handleEndFile(qint64 entryID, int reason, int error);
    void fail(int error);
    void command(std::initializer_list<const char *> arguments, quint64 tag = 0);
    void startPendingLoad();

    mpv_handle *m_handle = nullptr;
    bool m_renderReady = false;
    QString m_pendingLoad;
    std::atomic_bool m_drainQueued = false;

    bool m_hasMedia = false;
    quint64 m_loadGeneration = 0;
    qint64 m_currentEntryID = -1;
    double m_position = std::numeric_limits<double>::quiet_NaN();
    double m_duration = std::numeric_limits<double>::quiet_NaN();
    QSize m_videoSize;
    qint64 m_displayWidth = 0;
    qint64 m_displayHeight = 0;
    bool m_paused = false;
    bool m_coreIdle = true;
    bool m_pausedForCache = false;
    bool m_endReached = false;
    bool m_failed = false;
};
