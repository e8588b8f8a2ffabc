#pragma once

#include <QString>
#include <QStringList>

// The player's command line: "velmplayerpro [--help] [--version] [FILE|URL]…". Read before any
// GUI object exists, so --help and --version work without a display.
struct AppCommandLine
{
    bool showHelp = false;
    bool showVersion = false;
    QStringList sources; // files and addresses to open, in order
    QString error;       // non-empty for an unknown option

    static AppCommandLine parse(const QStringList &arguments);
    static QString helpText();
    static QString versionText();
};
