#pragma once

#include "AppVersion.h"

#include <QString>
#include <QStringView>

// How the product names itself: to the user, to the settings store and to servers.
namespace AppIdentity {
// Settings live under organisation and application "VelmPlayerPro".
inline constexpr QStringView organizationName = u"VelmPlayerPro";
inline constexpr QStringView applicationName = u"VelmPlayerPro";
// The window title, and the player title whenever nothing more specific is known.
inline constexpr QStringView displayName = u"Velm Player Pro";
// The desktop file's name without ".desktop", which is also the software centres' id and the
// name of the icon.
inline constexpr QStringView desktopEntry = u"app.velmplayer.VelmPlayerPro";
inline constexpr QStringView executableName = u"velmplayerpro";
inline constexpr QStringView version = QT_UNICODE_LITERAL(VELM_VERSION);
// The product's own web origin: the address our YouTube player page claims, so that the embedded
// player knows who hosts it. Never loaded from the network.
inline constexpr QStringView webOrigin = u"https://velmplayer.app";
// How the engine and the playlist downloads introduce themselves to servers.
inline QString userAgent()
{
    return QStringLiteral("VelmPlayerPro/") + version.toString();
}
} // namespace AppIdentity
