#include "App/AppCommandLine.h"
#include "App/AppIdentity.h"
#include "App/AppStartup.h"
#include "App/AppWindow.h"
#include "Player/PlayerModel.h"
#include "UI/DialogMediaFileChooser.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char **argv)
{
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
    if (const QString reason = AppStartup::missingDisplayReason(); !reason.isEmpty()) {
        std::fprintf(stderr, "velmplayerpro: %s\n", qPrintable(reason));
        return 1;
    }

    AppStartup::enterGuardedStart();
    QApplication application(argc, argv);
    AppStartup::leaveGuardedStart();
    AppStartup::fixNumericLocale();
    QCoreApplication::setOrganizationName(AppIdentity::organizationName.toString());
    QCoreApplication::setApplicationName(AppIdentity::applicationName.toString());
    QCoreApplication::setApplicationVersion(AppIdentity::version.toString());

    PlayerModel player;
    AppWindow window;
    DialogMediaFileChooser fileChooser(&window);
    player.setFileChooser(&fileChooser);
    window.show();
    return application.exec();
}
