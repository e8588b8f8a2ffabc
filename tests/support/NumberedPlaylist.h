#pragma once

#include <QByteArray>

// A playlist of count channels, one line pair each: channel i is named "Channel i", is in group
// "G" followed by i modulo 97, and plays http://tv.example/i.m3u8.
inline QByteArray numberedPlaylist(int count)
{
    QByteArray text = "#EXTM3U\n";
    for (int channel = 0; channel < count; ++channel) {
        const QByteArray number = QByteArray::number(channel);
        text += "#EXTINF:-1 group-title=\"G" + QByteArray::number(channel % 97) + "\",Channel " +
                number + "\nhttp://tv.example/" + number + ".m3u8\n";
    }
    return text;
}
