#include "Web/WebPlayerScript.h"

#include <charconv>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {
constexpr QStringView okVideoElement = u"var v=document.querySelector('video'); if(v){";

QString flag(bool value)
{
    return value ? u"true"_s : u"false"_s;
}
} // namespace

QString WebPlayerScript::number(double value)
{
    if (std::isnan(value))
        return u"NaN"_s;
    if (std::isinf(value))
        return value > 0 ? u"Infinity"_s : u"-Infinity"_s;

    // Plain decimals between 1e-4 and 1e16, exponent form outside, as the usual double
    // description does; both read back to the same value in any script engine.
    const double magnitude = std::fabs(value);
    const bool plain = magnitude == 0 || (magnitude >= 1e-4 && magnitude < 1e16);
    char buffer[64];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value,
                      plain ? std::chars_format::fixed : std::chars_format::scientific);
    QString text = QString::fromLatin1(buffer, result.ptr - buffer);
    if (plain && !text.contains(u'.'))
        text += u".0"_s;
    return text;
}

QString WebPlayerScript::toggle(WebPlayerService service)
{
    if (service == WebPlayerService::youtube)
        return u"velmToggle();"_s;
    return okVideoElement.toString() + u"v.paused?v.play():v.pause();}"_s;
}

QString WebPlayerScript::skip(WebPlayerService service, double seconds)
{
    if (service == WebPlayerService::youtube)
        return u"velmSkip("_s + number(seconds) + u");"_s;
    return okVideoElement.toString() + u"v.currentTime=Math.max(0,v.currentTime+("_s +
           number(seconds) + u"));}"_s;
}

QString WebPlayerScript::setVolume(WebPlayerService service, double level)
{
    if (service == WebPlayerService::youtube)
        return u"velmSetVolume("_s + number(level) + u");"_s;
    return okVideoElement.toString() + u"v.muted=false;v.volume="_s + number(level) + u";}"_s;
}

QString WebPlayerScript::setMuted(WebPlayerService service, bool muted)
{
    if (service == WebPlayerService::youtube)
        return u"velmSetMuted("_s + flag(muted) + u");"_s;
    return okVideoElement.toString() + u"v.muted="_s + flag(muted) + u";}"_s;
}
