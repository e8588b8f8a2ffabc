#pragma once

#include "Web/WebPlayerService.h"

#include <QString>

// The script commands that drive the two embedded web players. Each is a complete statement for
// the page's script engine: the YouTube page is our own and defines velm… functions, while the
// OK.ru page is not, so its commands act on the page's first video element and do nothing
// without one.
class WebPlayerScript
{
public:
    WebPlayerScript() = delete;

    // A number as script text: the shortest decimal that reads back to the same double, always
    // with a point (5.0, -20.0, 0.35); exponent form far from 1, as script engines read it.
    static QString number(double value);

    static QString toggle(WebPlayerService service);
    // Moves the position by that many seconds, never below 0.
    static QString skip(WebPlayerService service, double seconds);
    // Unmutes and sets the level, 0 … 1.
    static QString setVolume(WebPlayerService service, double level);
    static QString setMuted(WebPlayerService service, bool muted);
};
