#pragma once

#include "App/AppWindow.h"
#include "App/ControlCommands.h"
#include "Player/PlayerModel.h"
#include "Playlist/LocalM3UActions.h"
#include "UI/DialogLocalM3UExportPrompts.h"
#include "UI/DialogMediaFileChooser.h"

#include <QObject>
#include <QStringList>

#include <memory>
#include <optional>

class ContentView;
class ControlServer;

// Everything the running application is made of, created once after the QApplication and torn
// down with it: the one player model, the main window with its menus and dialogs, the actions on
// the saved links, and the optional control socket.
class AppSession : public QObject
{
    Q_OBJECT

public:
    AppSession();
    ~AppSession() override;

    // Starts listening for commands at path; returns the reason of a failure.
    std::optional<QString> startControlServer(const QString &path);
    void show();
    // Opens what the command line names, in order, once the window is up.
    void open(const QStringList &sources);
    // The open-URL handler: a file handed over by the system plays under its file name.
    void openURL(const WebAddress &url);

    PlayerModel &player() { return m_player; }
    AppWindow &window() { return m_window; }
    ContentView &content() { return *m_content; }

private:
    PlayerModel m_player;
    AppWindow m_window;
    DialogMediaFileChooser m_fileChooser;
    DialogLocalM3UExportPrompts m_exportPrompts;
    LocalM3UActions m_localM3U;
    ContentView *m_content; // owned by the window
    ControlCommands m_commands;
    std::unique_ptr<ControlServer> m_controlServer;
};
