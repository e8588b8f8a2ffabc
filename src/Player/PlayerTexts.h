#pragma once

#include <QStringView>

// Messages the player model shows to the user.
namespace PlayerTexts {
inline constexpr QStringView invalidRemoteAddress = u"Enter a valid HTTP or HTTPS address.";
} // namespace PlayerTexts
