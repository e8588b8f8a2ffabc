#include "App/AppCommandLine.h"
#include "App/AppSession.h"
#include "App/AppStartup.h"
#include "App/InstanceChannel.h"
#include "App/VelmApplication.h"
#include "App/WindowScreenshot.h"
#include "Base/AppIdentity.h"
#include "UI/PlayerTheme.h"

#include <QDir>
#include <QIcon>

#include <csignal>
#include <cstdio>

int main(int argc, char **argv)
{
    AppStartup::giveEachThreadAMemoryPool();
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    const AppCommandLine commandLine = AppCommandLine::parse(arguments);
    if (!commandLine.error.isEmpty()) {
        std::fprintf(stderr, "velmplayerpro: %s\nTry 'velmplayerpro --help'.\n",
                     qPrintable(commandLine.error));
        return 2;
    }
    if (commandLine.showHelp || commandLine.showVersion) {
        const QString text =
            commandLine.showHelp ? AppCommandLine::helpText() : AppCommandLine::versionText();
        std::fputs(text.toUtf8().constData(), stdout);
        return 0;
    }
    // A window that a script drives, or one asked for, stands on its own; any other launch hands
    // its sources to the player already running and ends before it touches the window system.
    const QString channelPath = InstanceChannel::defaultPath();
    const bool ownWindow =
        commandLine.newWindow || !commandLine.screenshotPath.isEmpty() || channelPath.isEmpty();
    const bool mayHandOff = !ownWindow && commandLine.controlSocketPath.isEmpty();
    const QString workingDirectory = QDir::currentPath();
    InstanceChannel::HandOff handOff = InstanceChannel::HandOff::noPlayer;
    if (mayHandOff) {
        handOff = InstanceChannel::handOff(channelPath, commandLine.sources, workingDirectory);
        if (handOff == InstanceChannel::HandOff::delivered)
            return 0;
    }
    if (const QString reason = AppStartup::missingDisplayReason(); !reason.isEmpty()) {
        std::fprintf(stderr, "velmplayerpro: %s\n", qPrintable(reason));
        return 1;
    }

#ifdef SIGXFSZ
    // A file that grows past the user's size limit fails its write, as a full disk does, and the
    // recorder says so; by default the process would be killed and the recording lost.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
    AppStartup::prepareGraphics();
    AppStartup::enterGuardedStart();
    VelmApplication application(argc, argv);
    AppStartup::leaveGuardedStart();
    AppStartup::fixNumericLocale();
    QCoreApplication::setOrganizationName(AppIdentity::organizationName.toString());
    QCoreApplication::setApplicationName(AppIdentity::applicationName.toString());
    QCoreApplication::setApplicationVersion(AppIdentity::version.toString());
    QGuiApplication::setDesktopFileName(AppIdentity::desktopEntry.toString());
    QGuiApplication::setWindowIcon(
        QIcon(QStringLiteral(":/%1.svg").arg(AppIdentity::desktopEntry.toString())));

    // This player takes the launches that follow, unless it stands on its own or a player that
    // did not answer holds the socket. It listens before the window is made, so that launches
    // meanwhile wait for it rather than open windows of their own.
    InstanceChannel channel;
    if (!ownWindow && handOff == InstanceChannel::HandOff::noPlayer &&
        !channel.listen(channelPath) && mayHandOff &&
        InstanceChannel::handOff(channelPath, commandLine.sources, workingDirectory) ==
            InstanceChannel::HandOff::delivered)
        return 0; // another player started at the same moment and took the sources

    PlayerTheme::apply(application);
    AppSession session;
    if (!commandLine.controlSocketPath.isEmpty()) {
        if (const std::optional<QString> failure =
                session.startControlServer(commandLine.controlSocketPath)) {
            std::fprintf(stderr, "velmplayerpro: cannot listen on %s: %s\n",
                         qPrintable(commandLine.controlSocketPath), qPrintable(*failure));
            return 1;
        }
    }
    QObject::connect(&application, &VelmApplication::openRequested, &session, &AppSession::openURL);
    QObject::connect(&channel, &InstanceChannel::openRequested, &session,
                     [&session](const QStringList &sources, const QString &directory) {
                         session.bringToFront();
                         session.open(sources, directory);
                     });
    session.show();
    session.open(commandLine.sources, workingDirectory);
    std::optional<WindowScreenshot> screenshot;
    if (!commandLine.screenshotPath.isEmpty())
        screenshot.emplace(session, commandLine.screenshotPath, commandLine.screenshotAfter,
                           !commandLine.sources.isEmpty());
    return application.exec();
}
