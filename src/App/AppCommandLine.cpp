#include "App/AppCommandLine.h"

#include "App/AppIdentity.h"

AppCommandLine AppCommandLine::parse(const QStringList &arguments)
{
    AppCommandLine result;
    bool optionsEnded = false;
    for (const QString &argument : arguments.mid(1)) {
        if (optionsEnded || !argument.startsWith(u'-') || argument == u"-") {
            result.sources.append(argument);
        } else if (argument == u"--") {
            optionsEnded = true;
        } else if (argument == u"--help" || argument == u"-h") {
            result.showHelp = true;
        } else if (argument == u"--version" || argument == u"-v") {
            result.showVersion = true;
        } else if (result.error.isEmpty()) {
            result.error = QStringLiteral("unknown option: %1").arg(argument);
        }
    }
    return result;
}

QString AppCommandLine::helpText()
{
    return QStringLiteral("Usage: velmplayerpro [OPTION]... [FILE|URL]...\n"
                          "%1: a media player for files, streams, IPTV playlists and web videos.\n"
                          "\n"
                          "  -h, --help     show this help and exit\n"
                          "  -v, --version  show the version and exit\n"
                          "  --             treat every later argument as a file or address\n")
        .arg(AppIdentity::displayName);
}

QString AppCommandLine::versionText()
{
    return QStringLiteral("%1 %2\n").arg(AppIdentity::displayName, AppIdentity::version);
}
