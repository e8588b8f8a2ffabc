#pragma once

#include "Recording/PlayerRecordingQuality.h"
#include "Recording/PlayerRecordingState.h"
#include "Recording/RecorderError.h"
#include "Recording/RecordingOutcome.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QRect>
#include <QSize>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <memory>
#include <optional>

class CaptureEncoder;
class PlayerSurfaceRegistry;
class RecordingFrameGrabber;
class RecordingPanel;
class RecordingPermission;
class RecordingSaveDialog;
class SystemAudioSource;
class QWidget;

// Records what the player shows, with the system's sound, into an MP4 file: asks where to save
// it and when to stop, takes the registered surface's picture 30 times a second, shows a floating
// panel with the running time and a stop button, and publishes its state, the elapsed time, the
// last file saved and the last error for the window and the control bar. One for the life of the
// application; its properties, the panel and the dialog belong to the main thread, the encoding
// to a thread of its own.
class PlayerRecordingController : public QObject
{
    Q_OBJECT
    Q_PROPERTY(PlayerRecordingState state READ state NOTIFY stateChanged)
    Q_PROPERTY(double duration READ duration NOTIFY durationChanged)
    Q_PROPERTY(std::optional<QString> errorMessage READ errorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(std::optional<QUrl> lastSavedURL READ lastSavedURL NOTIFY lastSavedURLChanged)
    Q_PROPERTY(bool requiresScreenRecordingPermission READ requiresScreenRecordingPermission NOTIFY
                   requiresScreenRecordingPermissionChanged)
    Q_PROPERTY(std::optional<QString> panelText READ panelText NOTIFY panelTextChanged)

public:
    using AudioSources = std::function<std::unique_ptr<SystemAudioSource>()>;

    PlayerRecordingController(PlayerSurfaceRegistry &surfaces, RecordingPermission &permission,
                              AudioSources audioSources, QObject *parent = nullptr);
    // A recording still running is finished into its file first.
    ~PlayerRecordingController() override;

    PlayerRecordingState state() const { return m_state; }
    double duration() const { return m_duration; }
    const std::optional<QString> &errorMessage() const { return m_errorMessage; }
    const std::optional<QUrl> &lastSavedURL() const { return m_lastSavedURL; }
    bool requiresScreenRecordingPermission() const { return m_requiresPermission; }
    // The floating panel's label, while the panel shows.
    std::optional<QString> panelText() const;
    RecordingPanel *recordingPanel() const;

    // Asks where to save, then records. Results arrive through the properties.
    void startRecording(PlayerRecordingQuality quality);
    // Records into path as if the dialog had been confirmed with it and with stopAfter in its
    // field; the text of the refusal when stopAfter is not a duration (nothing changes then).
    std::optional<QString> startRecording(PlayerRecordingQuality quality, const QString &path,
                                          const QString &stopAfter);
    // Only while recording.
    void stopRecording();
    void stopFromPanel() { stopRecording(); }

Q_SIGNALS:
    void stateChanged();
    void durationChanged();
    void errorMessageChanged();
    void lastSavedURLChanged();
    void requiresScreenRecordingPermissionChanged();
    void panelTextChanged();
    // Something the user should know that is not a failure, such as a recording without sound.
    void notice(const QString &text);

private:
    struct Target
    {
        QWidget *window;
        QRect surfaceInWindow;
    };

    bool requestScreenRecordingPermissionIfNeeded();
    std::optional<Target> availableTarget();
    void prepare(PlayerRecordingQuality quality, const QString &path, const Target &target);
    void writerOpened(const QString &path, QWidget *window, QRect area,
                      const std::optional<QString> &failure);
    void failStart(const QString &path, const QString &description);
    void presentRecordingError(const QString &description);
    void didStartRecording(QWidget &window);
    void tick();
    void showRecordingPanel(QWidget &window);
    void hideRecordingPanel();
    void stopCapture();
    void finished(const RecordingOutcome &outcome);
    void audioUnavailable();

    void setState(PlayerRecordingState state);
    void setDuration(double duration);
    void setErrorMessage(const std::optional<QString> &message);
    void setLastSavedURL(const std::optional<QUrl> &url);
    void setRequiresPermission(bool required);
    // Stores value and announces it, only when it changes.
    template <typename T>
    void assign(T &field, const T &value, void (PlayerRecordingController::*changed)());

    PlayerSurfaceRegistry &m_surfaces;
    RecordingPermission &m_permission;
    AudioSources m_audioSources;

    PlayerRecordingState m_state = PlayerRecordingState::idle;
    double m_duration = 0;
    std::optional<QString> m_errorMessage;
    std::optional<QUrl> m_lastSavedURL;
    bool m_requiresPermission = false;

    std::unique_ptr<CaptureEncoder> m_encoder; // the capture thread, for the whole life
    std::unique_ptr<SystemAudioSource> m_audio;
    RecordingFrameGrabber *m_grabber = nullptr;
    QTimer m_durationTimer;
    std::optional<QElapsedTimer> m_startedAt;
    std::optional<double> m_automaticStopAfter;
    QPointer<RecordingPanel> m_panel;
    QPointer<RecordingSaveDialog> m_dialog;
    bool m_toldNoAudio = false;
};
