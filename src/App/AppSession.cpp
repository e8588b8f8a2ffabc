#include "App/AppSession.h"

#include "App/AppCommandLine.h"
#include "App/AppMenus.h"
#include "App/ControlServer.h"
#include "UI/ContentView.h"

#include <QDir>
#include <QMenuBar>

AppSession::AppSession()
    : m_fileChooser(&m_window), m_exportPrompts(&m_window),
      m_localM3U(m_player, LocalM3UStore::shared()),
      m_content(new ContentView(m_player, m_localM3U)),
      m_commands(m_player, m_localM3U, *m_content, m_window)
{
    m_player.setFileChooser(&m_fileChooser);
    m_localM3U.setExportPrompts(&m_exportPrompts);
    m_window.setContent(m_content);
    new AppMenus(*m_window.menuBar(), m_player); // owned by the menu bar
    connect(&m_window, &AppWindow::appeared, &m_player, &PlayerModel::installKeyboardShortcuts);
}

AppSession::~AppSession() = default;

std::optional<QString> AppSession::startControlServer(const QString &path)
{
    m_controlServer = std::make_unique<ControlServer>(m_commands);
    return m_controlServer->listen(path);
}

void AppSession::show()
{
    m_window.show();
}

void AppSession::open(const QStringList &sources)
{
    for (const QString &source : sources) {
        const std::optional<AppCommandLine::Source> target =
            AppCommandLine::resolve(source, QDir::currentPath());
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
