#pragma once

#include <QImage>
#include <QPoint>

#include <cstdint>
#include <vector>

// The pixels of a recorded surface, exactly its recording rectangle. OpenGL reads rows bottom
// first; the encoder turns them, so the window's thread never does.
struct CapturedPicture
{
    QImage image;
    bool bottomUp = false;
};

// A widget drawn over the picture (a toast, a badge, the full-screen controls), with its top-left
// corner in the picture's pixels.
struct CaptureOverlay
{
    QPoint at;
    QImage image;
};

// One grab: the picture, what lay over it, and when it was taken on the monotonic clock.
struct CaptureFrame
{
    CapturedPicture picture;
    std::vector<CaptureOverlay> overlays;
    std::int64_t time = 0; // nanoseconds
};

// Interleaved stereo samples at 48 kHz from the system's sound, stamped with the monotonic time
// of the first sample.
struct AudioChunk
{
    std::vector<float> samples;
    std::int64_t time = 0; // nanoseconds
};
