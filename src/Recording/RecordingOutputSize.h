#pragma once

#include "Recording/PlayerRecordingQuality.h"

#include <QSize>
#include <QSizeF>

#include <cstdint>
#include <optional>

// The video's size in pixels for a picture of `points` at the window's backing `scale`: normal
// records the pixels shown; hd fits the picture in a 1920 × 1080 box (1080 × 1920 when portrait),
// scaling small players up. Both sides even, at least 2, as H.264's 4:2:0 needs.
QSize outputDimensions(QSizeF points, double scale, PlayerRecordingQuality quality);

// The average bit rate of a recording of width × height pixels: 6 bits a pixel a second, at least
// 4 Mb/s; nothing when the product does not fit 64 bits.
std::optional<std::int64_t> recordingBitRate(int width, int height);
