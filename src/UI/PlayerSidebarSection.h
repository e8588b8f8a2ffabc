#pragma once

#include <QStringView>

#include <optional>

// The two panels of the sidebar.
enum class PlayerSidebarSection
{
    network,
    localM3U,
};

namespace PlayerSidebarSections {
// The names the control socket uses: "network", "localM3U".
inline QStringView name(PlayerSidebarSection section)
{
    return section == PlayerSidebarSection::network ? QStringView(u"network")
                                                    : QStringView(u"localM3U");
}
inline std::optional<PlayerSidebarSection> fromName(QStringView name)
{
    if (name == u"network")
        return PlayerSidebarSection::network;
    if (name == u"localM3U")
        return PlayerSidebarSection::localM3U;
    return std::nullopt;
}
} // namespace PlayerSidebarSections
