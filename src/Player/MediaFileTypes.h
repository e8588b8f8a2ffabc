#pragma once

#include <QStringView>

#include <array>

// The file-name extensions the Open Media dialog offers, in the order shown.
namespace MediaFileTypes {
inline constexpr std::array<QStringView, 18> extensions = {
    u"mp4",  u"mov", u"mkv", u"avi", u"webm", u"m4v", u"mpeg", u"mpg",  u"ts",
    u"m2ts", u"3gp", u"3g2", u"mp3", u"m4a",  u"aac", u"wav",  u"aiff", u"caf",
};
} // namespace MediaFileTypes
