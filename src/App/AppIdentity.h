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
inline constexpr QStringView version = QT_UNICODE_LITERAL(VELM_VERSION);
// How the engine and the playlist downloads introduce themselves to servers.
inline QString userAgent()
{
    return QStringLiteral("VelmPlayerPro/") + version.toString();
}
} // namespace AppIdentity
