#include "M3uCommands.h"

#include "DistinctTexts.h"

#include "Base/JsonText.h"
#include "Player/PlayerTexts.h"
#include "Player/RemoteAddress.h"
#include "Playlist/GuideReader.h"
#include "Playlist/InflatingDevice.h"
#include "Playlist/PlaylistError.h"
#include "Playlist/PlaylistJson.h"
#include "Playlist/PlaylistReader.h"

#include <QFile>
#include <QFileInfo>

#include <cstdio>
#include <limits>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

constexpr int exitInvalidAddress = 1;
constexpr int exitBadInput = 2;
constexpr int exitNoEntries = 3;

const char *const generalHelp =
    "Usage: velm-m3u COMMAND [ARGUMENTS]\n"
    "Reads IPTV playlists and web addresses the way Velm Player Pro does.\n"
    "\n"
    "Commands:\n"
    "  parse PATH [--base URL]  print the playlist's channels as a JSON array\n"
    "  classify ADDRESS         print what the player would do with an address, as JSON\n"
    "  stats PATH               summarise a playlist's channels\n"
    "  guide PATH CHANNEL_ID... count a programme guide's programmes of those channels\n"
    "\n"
    "'velm-m3u COMMAND --help' describes one command.\n";

const char *const parseHelp =
    "Usage: velm-m3u parse PATH [--base URL]\n"
    "Decodes the playlist (UTF-8, else Windows-1252), resolves relative addresses against the\n"
    "file's own address or against --base, and prints the channels as one JSON array of objects\n"
    "with id, name, url and, when present, logoURL, groupTitle and countryCode.\n"
    "PATH '-' reads standard input; --base is then required.\n"
    "Exit status: 0 success, 2 unreadable input or bad arguments, 3 no playable address.\n";

const char *const classifyHelp =
    "Usage: velm-m3u classify ADDRESS\n"
    "Prints one JSON object saying what the player does with the typed address:\n"
    "  {\"kind\":\"youtube\",\"videoID\":...,\"playlistID\":...,\"id\":...}\n"
    "  {\"kind\":\"okru\",\"videoID\":...,\"embedURL\":...}\n"
    "  {\"kind\":\"playlist\",\"url\":...}\n"
    "  {\"kind\":\"stream\",\"url\":...,\"live\":true|false}\n"
    "  {\"kind\":\"invalid\",\"message\":...}  (exit status 1)\n";

const char *const statsHelp =
    "Usage: velm-m3u stats PATH\n"
    "Counts the playlist's channels, distinct countries and groups, and the channels that lack a\n"
    "logo, a group or a country. PATH '-' reads standard input.\n";

const char *const guideHelp =
    "Usage: velm-m3u guide PATH CHANNEL_ID...\n"
    "Reads a programme guide (XMLTV, plain or gzip-compressed, told by its content) as the player\n"
    "does, keeping the programmes of the channels whose tvg-ids are given, of any time, and\n"
    "prints how many channels have programmes and how many programmes were kept.\n"
    "Exit status: 0 success, 2 unreadable or broken guide or bad arguments.\n";

// More than any real guide inflates to; a larger one is refused, as the player refuses it.
constexpr qint64 maxGuideBytes = qint64(2) << 30;

void writeOut(const QByteArray &bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
}

int fail(int status, const QString &message)
{
    std::fprintf(stderr, "velm-m3u: %s\n", message.toUtf8().constData());
    return status;
}

struct Playlist
{
    QList<PlaylistEntry> entries;
    int status = 0;
};

// Reads, decodes and parses PATH ("-": standard input) relative to base, or to the file's own
// address when base is null. A non-zero status has already been reported on standard error.
Playlist readPlaylistOnce(const QString &path, const WebAddress &base)
{
    QFile file;
    const bool standardInput = path == u"-";
    const bool opened = standardInput ? file.open(stdin, QIODevice::ReadOnly)
                                      : (file.setFileName(path), file.open(QIODevice::ReadOnly));
    if (!opened)
        return {
            {},
            fail(exitBadInput, QStringLiteral("cannot read %1: %2").arg(path, file.errorString()))};
    // The player's own reading: the same text rules, refusals and logos as in the application,
    // without its size limit.
    PlaylistReadResult result = PlaylistReader::readDevice(
        file, base.isNull() ? WebAddress::fromLocalFile(QFileInfo(path).absoluteFilePath()) : base,
        std::numeric_limits<qint64>::max(), PlaylistReader::Guides::dropped);
    if (!result.succeeded())
        return {{},
                fail(result.failure == localizedDescription(PlaylistError::empty) ? exitNoEntries
                                                                                  : exitBadInput,
                     result.failure)};
    return {std::move(result.entries), 0};
}

// readPlaylistOnce(), kept until the process ends. The tool ends right after a command's output,
// and the system then takes a long list's memory back at once; freeing its 300,000 strings one by
// one before would add some 7 ms to the 60 that `stats` takes on a list of 100,000 channels.
const Playlist &readPlaylist(const QString &path, const WebAddress &base)
{
    static Playlist kept;
    kept = readPlaylistOnce(path, base);
    return kept;
}

QByteArray jsonOrNull(const std::optional<QString> &text)
{
    return text ? JsonText::quoted(*text) : QByteArray("null");
}

QByteArray describeTarget(const RemoteTarget &target)
{
    switch (target.kind) {
    case RemoteTarget::Kind::youtube:
        return "{\"kind\":\"youtube\",\"videoID\":" + jsonOrNull(target.youtube->videoID()) +
               ",\"playlistID\":" + jsonOrNull(target.youtube->playlistID()) +
               ",\"id\":" + JsonText::quoted(target.youtube->id()) + '}';
    case RemoteTarget::Kind::okVideo:
        return "{\"kind\":\"okru\",\"videoID\":" + JsonText::quoted(target.okVideo->videoID()) +
               ",\"embedURL\":" + JsonText::quoted(target.okVideo->embedURL().text()) + '}';
    case RemoteTarget::Kind::playlist:
        return "{\"kind\":\"playlist\",\"url\":" + JsonText::quoted(target.url.text()) + '}';
    case RemoteTarget::Kind::stream:
        return "{\"kind\":\"stream\",\"url\":" + JsonText::quoted(target.url.text()) +
               ",\"live\":" + (target.isLiveStream ? "true" : "false") + '}';
    case RemoteTarget::Kind::invalid:
        break;
    }
    return "{\"kind\":\"invalid\",\"message\":" +
           JsonText::quoted(PlayerTexts::invalidRemoteAddress) + '}';
}

} // namespace

int M3uCommands::run(const QStringList &arguments)
{
    struct Command
    {
        QStringView name;
        const char *help;
        int (*run)(const QStringList &);
    };
    static const Command commands[] = {
        {u"parse", parseHelp, &M3uCommands::parse},
        {u"classify", classifyHelp, &M3uCommands::classify},
        {u"stats", statsHelp, &M3uCommands::stats},
        {u"guide", guideHelp, &M3uCommands::guide},
    };
    const QString name = arguments.value(0);
    const QStringList rest = arguments.mid(1);
    for (const Command &command : commands) {
        if (name != command.name)
            continue;
        if (rest.contains(u"--help"_s) || rest.contains(u"-h"_s)) {
            writeOut(command.help);
            return 0;
        }
        return command.run(rest);
    }
    if (name == u"--help" || name == u"-h" || name == u"help") {
        writeOut(generalHelp);
        return 0;
    }
    std::fputs(generalHelp, stderr);
    return name.isEmpty() ? exitBadInput
                          : fail(exitBadInput, QStringLiteral("unknown command: %1").arg(name));
}

int M3uCommands::parse(const QStringList &arguments)
{
    QString path;
    WebAddress base;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments[i];
        if (argument == u"--base") {
            if (++i == arguments.size())
                return fail(exitBadInput, u"--base needs an address"_s);
            const std::optional<WebAddress> address = WebAddress::fromText(arguments[i]);
            if (!address || !address->hasScheme())
                return fail(exitBadInput,
                            QStringLiteral("--base is no absolute address: %1").arg(arguments[i]));
            base = *address;
        } else if (path.isNull() && (argument == u"-" || !argument.startsWith(u'-'))) {
            path = argument;
        } else {
            return fail(exitBadInput, QStringLiteral("unexpected argument: %1").arg(argument));
        }
    }
    if (path.isNull())
        return fail(exitBadInput, u"parse needs a PATH (see 'velm-m3u parse --help')"_s);
    if (path == u"-" && base.isNull())
        return fail(exitBadInput, u"reading standard input needs --base URL"_s);
    const Playlist &playlist = readPlaylist(path, base);
    if (playlist.status != 0)
        return playlist.status;
    writeOut(PlaylistJson::encode(playlist.entries) + '\n');
    return 0;
}

int M3uCommands::classify(const QStringList &arguments)
{
    if (arguments.size() != 1)
        return fail(exitBadInput, u"classify takes exactly one ADDRESS"_s);
    const RemoteTarget target = RemoteAddress::classify(arguments[0]);
    writeOut(describeTarget(target) + '\n');
    if (target.kind == RemoteTarget::Kind::invalid)
        return fail(exitInvalidAddress, PlayerTexts::invalidRemoteAddress.toString());
    return 0;
}

int M3uCommands::stats(const QStringList &arguments)
{
    if (arguments.size() != 1)
        return fail(exitBadInput, u"stats takes exactly one PATH"_s);
    const Playlist &playlist = readPlaylist(arguments[0], {});
    if (playlist.status != 0)
        return playlist.status;
    DistinctTexts countries;
    DistinctTexts groups;
    qsizetype withoutLogo = 0, withoutGroup = 0, withoutCountry = 0;
    for (const PlaylistEntry &entry : playlist.entries) {
        withoutLogo += entry.logoURL ? 0 : 1;
        if (entry.groupTitle)
            groups.add(*entry.groupTitle);
        else
            ++withoutGroup;
        if (entry.countryCode)
            countries.add(*entry.countryCode);
        else
            ++withoutCountry;
    }
    writeOut(QStringLiteral("Entries:            %1\n"
                            "Distinct countries: %2\n"
                            "Distinct groups:    %3\n"
                            "Without logo:       %4\n"
                            "Without group:      %5\n"
                            "Without country:    %6\n")
                 .arg(playlist.entries.size())
                 .arg(countries.count())
                 .arg(groups.count())
                 .arg(withoutLogo)
                 .arg(withoutGroup)
                 .arg(withoutCountry)
                 .toUtf8());
    return 0;
}

int M3uCommands::guide(const QStringList &arguments)
{
    if (arguments.size() < 2)
        return fail(exitBadInput, u"guide takes a PATH and at least one CHANNEL_ID"_s);
    QFile file(arguments[0]);
    if (!file.open(QIODevice::ReadOnly))
        return fail(exitBadInput,
                    QStringLiteral("cannot read %1: %2").arg(arguments[0], file.errorString()));
    InflatingDevice guide(file, maxGuideBytes);
    guide.open(QIODevice::ReadOnly);
    QList<GuideReader::Channel> channels;
    for (const QString &id : arguments.mid(1))
        channels.append({id, {}, {}});
    constexpr qint64 allTime = std::numeric_limits<qint64>::max() / 2;
    const GuideReader::Result result = GuideReader(channels, -allTime, allTime).read(guide);
    qsizetype withProgrammes = 0, programmes = 0;
    for (const QList<GuideProgramme> &list : result.programmes) {
        withProgrammes += list.isEmpty() ? 0 : 1;
        programmes += list.size();
    }
    writeOut(QStringLiteral("Channels with programmes: %1\nProgrammes:               %2\n")
                 .arg(withProgrammes)
                 .arg(programmes)
                 .toUtf8());
    if (!result.complete)
        return fail(exitBadInput, QStringLiteral("the guide broke off: %1").arg(result.error));
    return 0;
}
