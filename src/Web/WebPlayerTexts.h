#pragma once

#include <QStringView>

// What the web player views say themselves.
namespace WebPlayerTexts {
// Shown over a web player whose page process ended; the next content opened loads afresh.
inline constexpr QStringView pageStopped =
    u"The web player stopped unexpectedly.\nOpen the video again to reload it.";
} // namespace WebPlayerTexts
