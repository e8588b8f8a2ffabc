#pragma once

#include <QStringView>

#include <array>

// The address schemes the engine opens. mpv knows more, but the others reach into the process or
// the machine (fd://, fdclose://, edl://, memory://, av://lavfi…), and addresses come from
// playlists found on the web.
namespace MediaSchemes {
inline constexpr std::array<QStringView, 12> playable = {
    u"file",  u"http", u"https", u"rtmp", u"rtmps", u"rtsp",
    u"rtsps", u"rtp",  u"srt",   u"udp",  u"mms",   u"mmsh",
};

// An absolute file path, or an address with one of the schemes above in any letter case.
inline bool isPlayableTarget(QStringView target)
{
    if (target.startsWith(u'/'))
        return true;
    const qsizetype separator = target.indexOf(u"://");
    if (separator <= 0)
        return false;
    const QStringView scheme = target.left(separator);
    for (QStringView allowed : playable) {
        if (scheme.compare(allowed, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}
} // namespace MediaSchemes
