#include "App/ContentControlProperties.h"

#include "Surface/PlayerHostingView.h"
#include "Surface/PortraitDisplayMode.h"
#include "UI/ContentState.h"
#include "UI/ContentView.h"

#include <QStringList>

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

const QStringList names = {u"address"_s,          u"movieName"_s,
                           u"showMovieName"_s,    u"selectedSidebarSection"_s,
                           u"channelSearch"_s,    u"selectedCountryCode"_s,
                           u"selectedCategory"_s, u"portraitMode"_s,
                           u"showSidebar"_s,      u"isFullScreen"_s,
                           u"horizontalPan"_s};

QJsonValue optionalJson(const std::optional<QString> &text)
{
    return text ? QJsonValue(*text) : QJsonValue(QJsonValue::Null);
}

// A text, or null for none; anything else is refused.
bool optionalText(const QJsonValue &value, std::optional<QString> &text)
{
    if (value.isNull()) {
        text.reset();
        return true;
    }
    if (!value.isString())
        return false;
    text = value.toString();
    return true;
}

} // namespace

bool ContentControlProperties::isKnown(const QString &name)
{
    return names.contains(name);
}

std::optional<QJsonValue> ContentControlProperties::get(const QString &name) const
{
    ContentState &state = m_content.state();
    if (name == u"address")
        return state.address();
    if (name == u"movieName")
        return state.movieName();
    if (name == u"showMovieName")
        return state.showMovieName();
    if (name == u"selectedSidebarSection") {
        const auto section = state.selectedSidebarSection();
        return section ? QJsonValue(PlayerSidebarSections::name(*section).toString())
                       : QJsonValue(QJsonValue::Null);
    }
    if (name == u"channelSearch")
        return state.channelSearch();
    if (name == u"selectedCountryCode")
        return optionalJson(state.selectedCountryCode());
    if (name == u"selectedCategory")
        return optionalJson(state.selectedCategory());
    if (name == u"portraitMode")
        return PortraitDisplayModes::rawValue(state.portraitMode()).toString();
    if (name == u"showSidebar")
        return state.showSidebar();
    if (name == u"isFullScreen")
        return m_content.window()->isFullScreen();
    if (name == u"horizontalPan")
        return hostingView() ? QJsonValue(hostingView()->horizontalPan()) : QJsonValue(0);
    return std::nullopt;
}

PlayerHostingView *ContentControlProperties::hostingView() const
{
    return m_content.findChild<PlayerHostingView *>();
}

std::optional<QString> ContentControlProperties::set(const QString &name, const QJsonValue &value)
{
    ContentState &state = m_content.state();
    const QString invalid = u"invalid value for "_s + name;
    std::optional<QString> text;
    if (name == u"address" || name == u"movieName" || name == u"channelSearch") {
        if (!value.isString())
            return invalid;
        // Through the fields, as if typed: the views and the window's rules see the change.
        if (name == u"address")
            state.setAddress(value.toString());
        else if (name == u"movieName")
            state.setMovieName(value.toString());
        else
            state.setChannelSearch(value.toString());
    } else if (name == u"showMovieName" || name == u"showSidebar" || name == u"isFullScreen") {
        if (!value.isBool())
            return invalid;
        if (name == u"showMovieName") {
            state.setShowMovieName(value.toBool());
        } else if (name == u"showSidebar") {
            state.setShowSidebar(value.toBool());
        } else {
            QWidget *window = m_content.window();
            const Qt::WindowStates others = window->windowState() & ~Qt::WindowFullScreen;
            window->setWindowState(value.toBool() ? others | Qt::WindowFullScreen : others);
        }
    } else if (name == u"selectedSidebarSection") {
        if (!optionalText(value, text))
            return invalid;
        const auto section = text ? PlayerSidebarSections::fromName(*text) : std::nullopt;
        if (text && !section)
            return invalid;
        state.setSelectedSidebarSection(section);
    } else if (name == u"selectedCountryCode" || name == u"selectedCategory") {
        if (!optionalText(value, text))
            return invalid;
        if (name == u"selectedCountryCode")
            state.setSelectedCountryCode(text);
        else
            state.setSelectedCategory(text);
    } else if (name == u"portraitMode") {
        const auto mode =
            value.isString() ? PortraitDisplayModes::fromRawValue(value.toString()) : std::nullopt;
        if (!mode)
            return invalid;
        state.selectDisplayMode(*mode);
    } else if (name == u"horizontalPan") {
        // By hand only in the manual mode, as the mouse pans only there.
        const double pan = value.toDouble(NAN);
        if (!value.isDouble() || !(pan >= -1 && pan <= 1))
            return invalid;
        if (state.portraitMode() != PortraitDisplayMode::manual || !hostingView())
            return u"horizontalPan can be set in Manual Reframe only"_s;
        hostingView()->setHorizontalPan(pan);
    } else {
        return u"property not found"_s;
    }
    return std::nullopt;
}
