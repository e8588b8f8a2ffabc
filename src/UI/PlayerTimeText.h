#pragma once

#include <QString>

// How the control bar writes times: minutes and seconds, no hours (4503 s is "75:03").
class PlayerTimeText
{
public:
    PlayerTimeText() = delete;

    // "mm:ss" of the whole seconds; "00:00" for a value that is not finite.
    static QString time(double seconds);
    // The time left, never below zero (a live stream's position runs past its duration).
    static QString remaining(double duration, double position);
};
