#pragma once

#include "Base/WebAddress.h"
#include "Player/RemoteTarget.h"

#include <QString>

// The rules that turn typed or pasted text into something to play. Pure functions, shared by the
// player model and the command-line tool so both classify an address identically.
class RemoteAddress
{
public:
    RemoteAddress() = delete;

    // Trims the text and unwraps a Markdown link "[label](address)" and angle brackets "<address>".
    static QString normalizedRemoteAddress(QStringView text);
    // True for a ".m3u" path (not ".m3u8", which is an HLS stream) or a query item such as
    // type=m3u, format=m3u_plus or output=m3u8, in any letter case.
    static bool isIPTVPlaylistURL(const WebAddress &url);
    // Normalises the text and classifies it; Kind::invalid unless it is an http or https address.
    static RemoteTarget classify(QStringView text);
};
