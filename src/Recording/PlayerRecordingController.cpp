#include "Recording/PlayerRecordingController.h"

#include "Recording/CaptureEncoder.h"
#include "Recording/PlayerSurfaceRegistry.h"
#include "Recording/RecordingCaptureArea.h"
#include "Recording/RecordingDuration.h"
#include "Recording/RecordingFileName.h"
#include "Recording/RecordingFrameGrabber.h"
#include "Recording/RecordingOutputSize.h"
#include "Recording/RecordingPanel.h"
#include "Recording/RecordingPermission.h"
#include "Recording/RecordingSaveDialog.h"
#include "Recording/RecordingTexts.h"
#include "Recording/SystemAudioSource.h"

#include <QDateTime>
#include <QFile>
#include <QGuiApplication>
#include <QScreen>
#include <QThreadPool>
#include <QWidget>

namespace {

constexpr int tickMilliseconds = 250;

QList<QRect> displayGeometries()
{
    QList<QRect> displays;
    for (const QScreen *screen : QGuiApplication::screens())
        displays.append(screen->geometry());
    return displays;
}

// The file is the user's; removing it never holds up the window.
void removeInBackground(const QString &path)
{
    QThreadPool::globalInstance()->start([path] { QFile::remove(path); });
}

} // namespace

PlayerRecordingController::PlayerRecordingController(PlayerSurfaceRegistry &surfaces,
                                                     RecordingPermission &permission,
                                                     AudioSources audioSources, QObject *parent)
    : QObject(parent), m_surfaces(surfaces), m_permission(permission),
      m_audioSources(std::move(audioSources))
{
    m_encoder = std::make_unique<CaptureEncoder>([this](const QString &) {
        // The file cannot be written any more (a full disk): stopping reports why.
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (m_state == PlayerRecordingState::recording)
                    stopRecording();
            },
            Qt::QueuedConnection);
    });
    m_durationTimer.setInterval(tickMilliseconds);
    connect(&m_durationTimer, &QTimer::timeout, this, &PlayerRecordingController::tick);
}

PlayerRecordingController::~PlayerRecordingController()
{
    // The encoder's thread finishes the file before it ends; nothing is reported any more.
    if (m_state == PlayerRecordingState::recording) {
        stopCapture();
        m_encoder->finish([](const RecordingOutcome &) {});
    }
    m_encoder.reset();
    delete m_panel;
    delete m_dialog;
}

std::optional<QString> PlayerRecordingController::panelText() const
{
    if (!m_panel)
        return std::nullopt;
    return m_panel->text();
}

RecordingPanel *PlayerRecordingController::recordingPanel() const
{
    return m_panel;
}

void PlayerRecordingController::startRecording(PlayerRecordingQuality quality)
{
    if (!requestScreenRecordingPermissionIfNeeded())
        return;
    const std::optional<Target> target = availableTarget();
    if (!target || m_dialog)
        return;
    m_dialog = new RecordingSaveDialog(proposedRecordingName(quality, QDateTime::currentDateTime()),
                                       target->window);
    connect(m_dialog, &QDialog::finished, this, [this, quality](int result) {
        RecordingSaveDialog *dialog = m_dialog;
        m_dialog = nullptr;
        dialog->deleteLater();
        if (result == QDialog::Accepted && !dialog->chosenPath().isEmpty())
            startRecording(quality, dialog->chosenPath(), dialog->stopAfterText());
    });
    m_dialog->open();
}

std::optional<QString> PlayerRecordingController::startRecording(PlayerRecordingQuality quality,
                                                                 const QString &path,
                                                                 const QString &stopAfter)
{
    const QString stopText = stopAfter.trimmed();
    std::optional<double> stopAfterSeconds;
    if (!stopText.isEmpty()) {
        stopAfterSeconds = parseRecordingDuration(stopText);
        if (!stopAfterSeconds) {
            const QString refusal = RecordingTexts::invalidDuration.toString();
            setErrorMessage(std::nullopt);
            setErrorMessage(refusal);
            return refusal;
        }
    }
    const std::optional<Target> target = availableTarget();
    if (!target)
        return m_errorMessage;
    m_automaticStopAfter = stopAfterSeconds;
    prepare(quality, path, *target);
    return std::nullopt;
}

bool PlayerRecordingController::requestScreenRecordingPermissionIfNeeded()
{
    if (m_permission.preflight() || m_permission.request()) {
        setRequiresPermission(false);
        return true;
    }
    setRequiresPermission(true);
    setErrorMessage(std::nullopt);
    setErrorMessage(RecordingTexts::permissionNeeded.toString());
    return false;
}

std::optional<PlayerRecordingController::Target> PlayerRecordingController::availableTarget()
{
    PlayerRecordingSurface *surface = m_surfaces.surface();
    QWidget *view = surface ? surface->recordingView() : nullptr;
    QWidget *window = view ? view->window() : nullptr;
    if (!window || !window->isVisible()) {
        setErrorMessage(std::nullopt);
        setErrorMessage(RecordingTexts::surfaceNotAvailable.toString());
        return std::nullopt;
    }
    const QRect rect = surface->recordingRectInView();
    return Target{window, QRect(view->mapTo(window, rect.topLeft()), rect.size())};
}

void PlayerRecordingController::prepare(PlayerRecordingQuality quality, const QString &path,
                                        const Target &target)
{
    setState(PlayerRecordingState::preparing);
    setErrorMessage(std::nullopt);
    setLastSavedURL(std::nullopt);
    QWidget *window = target.window;
    if (!window->windowHandle() || window->isMinimized()) {
        failStart(path, errorDescription(RecorderError::playerWindowNotFound));
        return;
    }
    const auto found =
        RecordingCaptureArea::find(window->frameGeometry(), window->geometry().topLeft(),
                                   target.surfaceInWindow, displayGeometries());
    if (const auto *error = std::get_if<RecorderError>(&found)) {
        failStart(path, errorDescription(*error));
        return;
    }
    const RecordingCaptureArea area = std::get<RecordingCaptureArea>(found);
    const QSize size =
        outputDimensions(QSizeF(area.inWindow.size()), window->devicePixelRatioF(), quality);
    QPointer<QWidget> guardedWindow(window);
    m_encoder->open(path, size, [this, path, guardedWindow, area](const auto &failure) {
        QMetaObject::invokeMethod(
            this,
            [this, path, guardedWindow, area, failure] {
                writerOpened(path, guardedWindow, area.inWindow, failure);
            },
            Qt::QueuedConnection);
    });
}

void PlayerRecordingController::writerOpened(const QString &path, QWidget *window, QRect area,
                                             const std::optional<QString> &failure)
{
    if (failure) {
        failStart(path, *failure);
        return;
    }
    if (!window) {
        m_encoder->finish([](const RecordingOutcome &) {});
        failStart(path, errorDescription(RecorderError::playerWindowNotFound));
        return;
    }
    CaptureEncoder *encoder = m_encoder.get();
    m_grabber = new RecordingFrameGrabber(
        m_surfaces, *window, area,
        [encoder](CaptureFrame &&frame) { encoder->offerFrame(std::move(frame)); }, this);
    m_toldNoAudio = false;
    m_audio = m_audioSources ? m_audioSources() : nullptr;
    if (m_audio) {
        m_audio->start([encoder](AudioChunk &&chunk) { encoder->offerAudio(std::move(chunk)); },
                       [this](const QString &) {
                           QMetaObject::invokeMethod(this,
                                                     &PlayerRecordingController::audioUnavailable,
                                                     Qt::QueuedConnection);
                       });
    } else {
        audioUnavailable();
    }
    didStartRecording(*window);
    m_grabber->start();
}

void PlayerRecordingController::failStart(const QString &path, const QString &description)
{
    removeInBackground(path);
    setState(PlayerRecordingState::idle);
    m_automaticStopAfter.reset();
    presentRecordingError(description);
}

void PlayerRecordingController::presentRecordingError(const QString &description)
{
    // Words of a refused capture mean something only where a capture permission exists: here a
    // folder's "Permission denied" is the folder's.
    bool refused = false;
    if (m_permission.exists()) {
        for (const QStringView word : RecordingTexts::permissionWords)
            refused = refused || description.contains(word, Qt::CaseInsensitive);
    }
    setRequiresPermission(refused);
    setErrorMessage(refused ? RecordingTexts::permissionBlocked.toString() : description);
}

void PlayerRecordingController::didStartRecording(QWidget &window)
{
    setState(PlayerRecordingState::recording);
    m_startedAt.emplace();
    m_startedAt->start();
    setDuration(0);
    m_durationTimer.start();
    showRecordingPanel(window);
}

void PlayerRecordingController::tick()
{
    if (m_startedAt)
        setDuration(double(m_startedAt->nsecsElapsed()) / 1e9);
    if (const QString text = recordingPanelText(m_duration, m_automaticStopAfter);
        m_panel && text != m_panel->text()) {
        m_panel->setText(text);
        Q_EMIT panelTextChanged();
    }
    if (m_automaticStopAfter && *m_automaticStopAfter <= m_duration)
        stopRecording();
}

void PlayerRecordingController::showRecordingPanel(QWidget &window)
{
    hideRecordingPanel();
    m_panel = new RecordingPanel(m_automaticStopAfter.has_value());
    connect(m_panel, &RecordingPanel::stopRequested, this,
            &PlayerRecordingController::stopFromPanel);
    m_panel->placeOn(window.screen() ? window.screen() : QGuiApplication::primaryScreen());
    m_panel->show();
    m_panel->raise();
    Q_EMIT panelTextChanged();
}

void PlayerRecordingController::hideRecordingPanel()
{
    if (!m_panel)
        return;
    m_panel->hide();
    m_panel->deleteLater();
    m_panel = nullptr;
    Q_EMIT panelTextChanged();
}

void PlayerRecordingController::stopRecording()
{
    if (m_state != PlayerRecordingState::recording)
        return;
    setState(PlayerRecordingState::stopping);
    hideRecordingPanel();
    stopCapture();
    m_automaticStopAfter.reset();
    m_encoder->finish([this](const RecordingOutcome &outcome) {
        QMetaObject::invokeMethod(
            this, [this, outcome] { finished(outcome); }, Qt::QueuedConnection);
    });
}

void PlayerRecordingController::stopCapture()
{
    m_durationTimer.stop();
    if (m_grabber) {
        m_grabber->stop();
        m_grabber->deleteLater();
        m_grabber = nullptr;
    }
    if (m_audio) {
        m_audio->stop();
        m_audio.reset();
    }
}

void PlayerRecordingController::finished(const RecordingOutcome &outcome)
{
    // The outcome is published before the state, so whoever waits for idle finds it.
    if (outcome.savedPath)
        setLastSavedURL(QUrl::fromLocalFile(*outcome.savedPath));
    else
        setErrorMessage(outcome.error);
    m_startedAt.reset();
    setState(PlayerRecordingState::idle);
}

void PlayerRecordingController::audioUnavailable()
{
    if (m_toldNoAudio || m_state == PlayerRecordingState::idle)
        return;
    m_toldNoAudio = true;
    Q_EMIT notice(RecordingTexts::noSystemAudio.toString());
}

template <typename T>
void PlayerRecordingController::assign(T &field, const T &value,
                                       void (PlayerRecordingController::*changed)())
{
    if (field == value)
        return;
    field = value;
    Q_EMIT(this->*changed)();
}

void PlayerRecordingController::setState(PlayerRecordingState state)
{
    assign(m_state, state, &PlayerRecordingController::stateChanged);
}

void PlayerRecordingController::setDuration(double duration)
{
    assign(m_duration, duration, &PlayerRecordingController::durationChanged);
}

void PlayerRecordingController::setErrorMessage(const std::optional<QString> &message)
{
    assign(m_errorMessage, message, &PlayerRecordingController::errorMessageChanged);
}

void PlayerRecordingController::setLastSavedURL(const std::optional<QUrl> &url)
{
    assign(m_lastSavedURL, url, &PlayerRecordingController::lastSavedURLChanged);
}

void PlayerRecordingController::setRequiresPermission(bool required)
{
    assign(m_requiresPermission, required,
           &PlayerRecordingController::requiresScreenRecordingPermissionChanged);
}
