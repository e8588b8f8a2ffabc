#include "App/AppSession.h"

#include "App/AppCommandLine.h"
#include "App/AppMenus.h"
#include "App/AppTexts.h"
#include "App/ControlServer.h"
#include "App/PlayerKeyboardMonitor.h"
#include "App/PlayerMouseMonitor.h"
#include "Player/PlayerTiming.h"
#include "Recording/PulseSystemAudioSource.h"
#include "UI/ContentView.h"
#include "UI/PlayerControlBar.h"

#include <QDir>
#include <QMenuBar>

AppSession::AppSession()
    : m_player(m_youtubePlayers, m_okVideoPlayers), m_fileChooser(&m_window), m_prompts(&m_window),
      m_localM3U(m_player, m_localStore),
      m_recorder(m_surfaces, m_recordingPermission,
                 [] { return std::make_unique<PulseSystemAudioSource>(); }),
      m_content(new ContentView(
          m_player, m_localM3U,
          {m_notifier, m_surfaces, m_youtubePlayers, m_okVideoPlayers, m_webProfile})),
      m_commands(m_player, m_localM3U, *m_content, m_recorder, m_window),
      m_screenSaver(AppTexts::videoPlaying.toString()),
      m_mpris(m_player, {[this] { bringToFront(); },
                         [this](const QString &address) { open({address}, QDir::rootPath()); }})
{
    m_player.setFileChooser(&m_fileChooser);
    m_localM3U.setPrompts(&m_prompts);
    m_window.setContent(m_content);
    new AppMenus(*m_window.menuBar(), m_player); // owned by the menu bar
    connect(&m_window, &AppWindow::appeared, this, &AppSession::installMonitors);
    connectRecorder();
    keepScreenOnWhileVideoPlays();
    m_mpris.publish();
}

void AppSession::keepScreenOnWhileVideoPlays()
{
    const auto update = [this] {
        const bool webVideo = m_player.youtubeContent() || m_player.okVideoContent();
        const bool picture = m_player.videoAspectMediaLoadID() == m_player.mediaLoadID();
        m_screenSaver.setInhibited(m_player.isPlaying() && (webVideo || picture));
    };
    connect(&m_player, &PlayerModel::isPlayingChanged, this, update);
    connect(&m_player, &PlayerModel::videoAspectMediaLoadIDChanged, this, update);
    connect(&m_player, &PlayerModel::mediaLoadIDChanged, this, update);
    connect(&m_player, &PlayerModel::youtubeContentChanged, this, update);
    connect(&m_player, &PlayerModel::okVideoContentChanged, this, update);
}

void AppSession::connectRecorder()
{
    PlayerControlBar *bar = m_content->controlBar();
    bar->setRecordingAvailable(true);
    connect(bar, &PlayerControlBar::recordingRequested, &m_recorder,
            qOverload<PlayerRecordingQuality>(&PlayerRecordingController::startRecording));
    connect(bar, &PlayerControlBar::stopRecordingRequested, &m_recorder,
            &PlayerRecordingController::stopRecording);
    connect(&m_recorder, &PlayerRecordingController::stateChanged, bar,
            [this, bar] { bar->setRecordingState(m_recorder.state()); });
    connect(&m_recorder, &PlayerRecordingController::errorMessageChanged, m_content, [this] {
        if (const std::optional<QString> &message = m_recorder.errorMessage())
            m_content->showRecordingError(*message, m_recorder.requiresScreenRecordingPermission());
    });
    connect(&m_recorder, &PlayerRecordingController::lastSavedURLChanged, m_content, [this] {
        if (const std::optional<QUrl> &url = m_recorder.lastSavedURL())
            m_content->showRecordingSaved(url->toLocalFile());
    });
    connect(
        &m_recorder, &PlayerRecordingController::notice, &m_player,
        [this](const QString &text) { m_player.showToast(text, PlayerTiming::toastNanoseconds); });
}

AppSession::~AppSession() = default;

void AppSession::installMonitors()
{
    if (m_keyboardMonitor)
        return;
    m_keyboardMonitor = std::make_unique<PlayerKeyboardMonitor>(m_player);
    m_mouseMonitor = std::make_unique<PlayerMouseMonitor>(m_notifier);
}

std::optional<QString> AppSession::startControlServer(const QString &path)
{
    m_controlServer = std::make_unique<ControlServer>(m_commands, m_notifier);
    return m_controlServer->listen(path);
}

void AppSession::show()
{
    m_window.show();
}

void AppSession::bringToFront()
{
    m_window.setWindowState(m_window.windowState() & ~Qt::WindowMinimized);
    m_window.show();
    m_window.raise();
    m_window.activateWindow();
}

void AppSession::open(const QStringList &sources, const QString &workingDirectory)
{
    for (const QString &source : sources) {
        const std::optional<AppCommandLine::Source> target =
            AppCommandLine::resolve(source, workingDirectory);
        if (!target)
            continue;
        if (target->remoteAddress)
            m_player.openRemote(*target->remoteAddress, std::nullopt);
        else
            openURL(*target->media);
    }
}

void AppSession::openURL(const WebAddress &url)
{
    m_player.play(url, url.lastPathComponent(), false);
}
