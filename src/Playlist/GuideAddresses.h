#pragma once

#include "Base/WebAddress.h"

#include <QByteArrayView>
#include <QList>

// Where a playlist says its programme guides are: the header line's x-tvg-url (also spelled
// url-tvg) attributes, each a comma-separated list. Read by a pass of its own over the header, so
// the rules for the channels stay as they are. Pure; any thread.
namespace GuideAddresses {
// The addresses in the order written, each once, relative ones resolved against base as channel
// lines are; nothing when the first line that is not blank is no "#EXTM3U" header.
QList<WebAddress> fromPlaylist(QByteArrayView bytes, const WebAddress &base);
} // namespace GuideAddresses
