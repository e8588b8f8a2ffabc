#pragma once

#include <QStringView>

// What the video area says.
namespace SurfaceTexts {
inline constexpr QStringView promptTitle = u"Click to open media";
inline constexpr QStringView promptDetail = u"or drop a video or audio file here";
inline constexpr QStringView promptToolTip = u"Open Media";
inline constexpr QStringView buffering = u"Buffering\u2026";
} // namespace SurfaceTexts
