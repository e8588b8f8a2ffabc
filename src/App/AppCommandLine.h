#pragma once

#include "Base/WebAddress.h"

#include <QString>
#include <QStringList>

#include <optional>

#include <optional>

// The player's command line: "velmplayerpro [--help] [--version] [--new-window]
// [--ipc-server PATH] [--screenshot PATH [--after SECONDS]] [FILE|URL]…". Read before any GUI
// object exists, so --help and --version work without a display.
struct AppCommandLine
{
    // What a source of the command line asks for: a typed address goes through the remote opening
    // (web videos, playlists, streams); a file or another media address is played.
    struct Source
    {
        std::optional<QString> remoteAddress; // an http or https address
        std::optional<WebAddress> media;      // a file or an address of another media scheme
    };

    bool showHelp = false;
    bool showVersion = false;
    bool newWindow = false;    // --new-window: a player of its own, not the one already running
    QString controlSocketPath; // --ipc-server; empty without one
    QString screenshotPath;    // --screenshot: save a PNG of the window there, then quit
    std::optional<double> screenshotAfter; // --after: seconds to wait instead of the first frame
    QStringList sources;                   // files and addresses to open, in order
    QString error;                         // non-empty for an unknown option or a missing value

    static AppCommandLine parse(const QStringList &arguments);
    static QString helpText();
    static QString versionText();
    // A relative path is taken from the working directory; nothing for text that names no file
    // and is no valid address.
    static std::optional<Source> resolve(const QString &source, const QString &workingDirectory);
};
