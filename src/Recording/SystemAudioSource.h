#pragma once

#include "Recording/CapturedPicture.h"

#include <QString>

#include <functional>

// What the computer plays, as a recording hears it: 48 kHz stereo chunks stamped on the capture
// clock, delivered on a thread of the source's own.
class SystemAudioSource
{
public:
    using Deliver = std::function<void(AudioChunk &&chunk)>;
    // Once at most, when the sound cannot be had (no sound server, or it went away).
    using Failed = std::function<void(const QString &reason)>;

    virtual ~SystemAudioSource() = default;
    // Returns at once; chunks then arrive until stop.
    virtual void start(Deliver deliver, Failed failed) = 0;
    // Once it returns no chunk arrives any more.
    virtual void stop() = 0;
};
