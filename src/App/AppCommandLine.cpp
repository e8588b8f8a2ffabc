#include "App/AppCommandLine.h"

#include "App/AppIdentity.h"

#include <QDir>
#include <QRegularExpression>

AppCommandLine AppCommandLine::parse(const QStringList &arguments)
{
    AppCommandLine result;
    bool optionsEnded = false;
    const QStringList rest = arguments.mid(1);
    for (auto it = rest.cbegin(); it != rest.cend(); ++it) {
        const QString &argument = *it;
        if (optionsEnded || !argument.startsWith(u'-') || argument == u"-") {
            result.sources.append(argument);
        } else if (argument == u"--ipc-server" || argument.startsWith(u"--ipc-server=")) {
            if (argument.startsWith(u"--ipc-server="))
                result.controlSocketPath = argument.sliced(argument.indexOf(u'=') + 1);
            else if (std::next(it) != rest.cend())
                result.controlSocketPath = *++it;
            if (result.controlSocketPath.isEmpty() && result.error.isEmpty())
                result.error = QStringLiteral("--ipc-server needs a socket path");
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
                          "  --ipc-server PATH\n"
                          "                 accept JSON commands on a local socket at PATH\n"
                          "  --             treat every later argument as a file or address\n"
                          "\n"
                          "Each FILE or URL is opened in turn, so the last one given plays.\n")
        .arg(AppIdentity::displayName);
}

QString AppCommandLine::versionText()
{
    return QStringLiteral("%1 %2\n").arg(AppIdentity::displayName, AppIdentity::version);
}

std::optional<AppCommandLine::Source> AppCommandLine::resolve(const QString &source,
                                                              const QString &workingDirectory)
{
    static const QRegularExpression schemePrefix(QStringLiteral("^[A-Za-z][A-Za-z0-9+.-]*://"));
    if (schemePrefix.match(source).hasMatch()) {
        const QString scheme = source.left(source.indexOf(u':')).toLower();
        if (scheme == u"http" || scheme == u"https")
            return Source{source, std::nullopt};
        if (std::optional<WebAddress> address = WebAddress::fromText(source))
            return Source{std::nullopt, address};
        return std::nullopt;
    }
    if (source.isEmpty())
        return std::nullopt;
    const QString path = QDir::cleanPath(QDir(workingDirectory).absoluteFilePath(source));
    return Source{std::nullopt, WebAddress::fromLocalFile(path)};
}
