#include "App/AppCommandLine.h"

#include "Base/AppIdentity.h"

#include <QDir>
#include <QRegularExpression>

#include <cmath>

namespace {

// "--name VALUE" or "--name=VALUE": true when the argument is that option; value is then set, and
// empty when it is missing.
bool takeOptionValue(const QString &name, QStringList::const_iterator &it,
                     QStringList::const_iterator end, QString &value)
{
    const QString &argument = *it;
    if (argument.startsWith(name + u'=')) {
        value = argument.sliced(name.size() + 1);
        return true;
    }
    if (argument != name)
        return false;
    value = std::next(it) != end ? *++it : QString();
    return true;
}

} // namespace

AppCommandLine AppCommandLine::parse(const QStringList &arguments)
{
    AppCommandLine result;
    bool optionsEnded = false;
    const QStringList rest = arguments.mid(1);
    const auto fail = [&result](const QString &error) {
        if (result.error.isEmpty())
            result.error = error;
    };
    QString value;
    for (auto it = rest.cbegin(); it != rest.cend(); ++it) {
        const QString &argument = *it;
        if (optionsEnded || !argument.startsWith(u'-') || argument == u"-") {
            result.sources.append(argument);
        } else if (takeOptionValue(QStringLiteral("--ipc-server"), it, rest.cend(), value)) {
            result.controlSocketPath = value;
            if (value.isEmpty())
                fail(QStringLiteral("--ipc-server needs a socket path"));
        } else if (takeOptionValue(QStringLiteral("--screenshot"), it, rest.cend(), value)) {
            result.screenshotPath = value;
            if (value.isEmpty())
                fail(QStringLiteral("--screenshot needs a file path"));
        } else if (takeOptionValue(QStringLiteral("--after"), it, rest.cend(), value)) {
            bool ok = false;
            const double seconds = value.toDouble(&ok);
            if (ok && std::isfinite(seconds) && seconds >= 0)
                result.screenshotAfter = seconds;
            else
                fail(QStringLiteral("--after needs a number of seconds"));
        } else if (argument == u"--") {
            optionsEnded = true;
        } else if (argument == u"--help" || argument == u"-h") {
            result.showHelp = true;
        } else if (argument == u"--version" || argument == u"-v") {
            result.showVersion = true;
        } else if (argument == u"--new-window") {
            result.newWindow = true;
        } else {
            fail(QStringLiteral("unknown option: %1").arg(argument));
        }
    }
    if (result.screenshotAfter && result.screenshotPath.isEmpty())
        fail(QStringLiteral("--after is only for --screenshot"));
    return result;
}

QString AppCommandLine::helpText()
{
    return QStringLiteral("Usage: velmplayerpro [OPTION]... [FILE|URL]...\n"
                          "%1: a media player for files, streams, IPTV playlists and web videos.\n"
                          "\n"
                          "  -h, --help     show this help and exit\n"
                          "  -v, --version  show the version and exit\n"
                          "  --new-window   open a window of its own even when the player runs\n"
                          "  --ipc-server PATH\n"
                          "                 accept JSON commands on a local socket at PATH\n"
                          "  --screenshot PATH\n"
                          "                 save a PNG of the window at PATH once the first frame\n"
                          "                 is shown (at most 5 s), then quit\n"
                          "  --after SECONDS\n"
                          "                 with --screenshot: wait this long instead\n"
                          "  --             treat every later argument as a file or address\n"
                          "\n"
                          "Each FILE or URL is opened in turn, so the last one given plays. While\n"
                          "the player runs, a new launch hands them to it and ends, unless it\n"
                          "has --new-window, --ipc-server or --screenshot.\n")
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
