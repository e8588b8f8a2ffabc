#pragma once

class QApplication;

// The player's dark look, the same on every platform: Qt's Fusion style with a dark palette and
// one style sheet for the window's own widgets.
class PlayerTheme
{
public:
    PlayerTheme() = delete;

    static void apply(QApplication &application);
};
