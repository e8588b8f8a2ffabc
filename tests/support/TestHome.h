#pragma once

#include <QCoreApplication>
#include <QTemporaryDir>

// A home of its own for the test process: settings are read and written under a temporary
// folder, never in the user's, and so are the saved links. Call before the first QSettings is made.
inline QTemporaryDir &useTemporaryHome()
{
    static QTemporaryDir home;
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (home.path() + QStringLiteral("/config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", (home.path() + QStringLiteral("/data")).toLocal8Bit());
    QCoreApplication::setOrganizationName(QStringLiteral("VelmPlayerPro"));
    QCoreApplication::setApplicationName(QStringLiteral("VelmPlayerPro"));
    return home;
}
