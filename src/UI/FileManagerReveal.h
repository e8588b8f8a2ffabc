#pragma once

#include <QString>

// Shows a file in the system's file manager: selected where the file manager can select it (the
// FileManager1 interface on Linux desktops, Finder on macOS), else its folder opened. Never
// waits for the file manager.
class FileManagerReveal
{
public:
    static void reveal(const QString &path);
};
