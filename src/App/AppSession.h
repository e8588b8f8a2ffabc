#pragma once

#include "App/AppWindow.h"
#include "App/ControlCommands.h"
#include "App/MprisService.h"
#include "App/ScreenSaverInhibitor.h"
#include "Base/AppNotifier.h"
#include "Player/PlayerModel.h"
#include "Playlist/LocalM3UStore.h"
#include "Recording/GrantedRecordingPermission.h"
#include "Recording/PlayerRecordingController.h"
#include "Recording/PlayerSurfaceRegistry.h"
#include "UI/DialogLocalM3UPrompts.h"
#include "UI/DialogMediaFileChooser.h"
#include "UI/LocalM3UActions.h"
#include "Web/OKVideoPlayerRegistry.h"
#include "Web/PlayerViewServices.h"
#include "Web/WebPlayerProfile.h"
#include "Web/YouTubePlayerRegistry.h"

#include <QObject>
#include <QStringList>

#include <memory>
#include <optional>

class ContentView;
class ControlServer;
class PlayerKeyboardMonitor;
class PlayerMouseMonitor;

// Everything the running application is made of, created once after the QApplication and torn
// down with it: the application-wide registries, notifier, browser profile and saved links, the
// one player model, the main window with its menus and dialogs, the key and mouse monitors once
// the window is up, and the optional control socket. Each object gets the others it works with
// from here; none reaches for a global.
class AppSession : public QObject
{
    Q_OBJECT

public:
    AppSession();
    ~AppSession() override;

    // Starts listening for commands at path; returns the reason of a failure.
    std::optional<QString> startControlServer(const QString &path);
    void show();
    // Shows the window in front of the others, unminimised, for what another launch handed over.
    void bringToFront();
    // Opens what a command line names, in order, once the window is up; relative paths are taken
    // from workingDirectory.
    void open(const QStringList &sources, const QString &workingDirectory);
    // The open-URL handler: a file handed over by the system plays under its file name.
    void openURL(const WebAddress &url);

    PlayerModel &player() { return m_player; }
    AppWindow &window() { return m_window; }
    ContentView &content() { return *m_content; }
    PlayerRecordingController &recorder() { return m_recorder; }

private:
    // Keys and mouse movements anywhere in the application reach the player from now on.
    void installMonitors();
    // The control bar drives the recorder; the window tells how recordings end.
    void connectRecorder();
    // The screen stays on while a picture plays, not for sound alone or a paused picture.
    void keepScreenOnWhileVideoPlays();

    // Declared before everything that refers to them, so they outlive it.
    AppNotifier m_notifier;
    PlayerSurfaceRegistry m_surfaces;
    YouTubePlayerRegistry m_youtubePlayers;
    OKVideoPlayerRegistry m_okVideoPlayers;
    WebPlayerProfile m_webProfile;
    LocalM3UStore m_localStore;
    PlayerModel m_player;
    AppWindow m_window;
    DialogMediaFileChooser m_fileChooser;
    DialogLocalM3UPrompts m_prompts;
    LocalM3UActions m_localM3U;
    GrantedRecordingPermission m_recordingPermission;
    PlayerRecordingController m_recorder;
    ContentView *m_content; // owned by the window
    ControlCommands m_commands;
    std::unique_ptr<PlayerKeyboardMonitor> m_keyboardMonitor;
    std::unique_ptr<PlayerMouseMonitor> m_mouseMonitor;
    std::unique_ptr<ControlServer> m_controlServer;
    ScreenSaverInhibitor m_screenSaver;
    MprisService m_mpris;
};
