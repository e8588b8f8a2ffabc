#include "App/ScreenSaverInhibitor.h"

#include "Base/AppIdentity.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <optional>

namespace {

const QString screenSaverService = QStringLiteral("org.freedesktop.ScreenSaver");
const QString screenSaverPath = QStringLiteral("/org/freedesktop/ScreenSaver");
const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString portalInhibit = QStringLiteral("org.freedesktop.portal.Inhibit");
const QString portalRequest = QStringLiteral("org.freedesktop.portal.Request");
// The portal's flag for "the session must not become idle".
constexpr uint portalIdleFlag = 8;
constexpr int callTimeoutMs = 5000;

} // namespace

struct ScreenSaverInhibitor::Hold
{
    enum class Route
    {
        screenSaver,
        portal,
        none, // neither answered: the desktop is left as it is
    };

    Route route = Route::screenSaver;
    bool requestUnderWay = false;
    std::optional<uint> cookie;            // the screen saver's
    std::optional<QDBusObjectPath> handle; // the portal's

    bool isHeld() const { return cookie || handle; }
};

ScreenSaverInhibitor::ScreenSaverInhibitor(const QString &reason, QObject *parent)
    : QObject(parent), m_reason(reason), m_hold(std::make_unique<Hold>())
{}

ScreenSaverInhibitor::~ScreenSaverInhibitor()
{
    m_wanted = false;
    m_hold->requestUnderWay = false;
    release();
}

void ScreenSaverInhibitor::settle()
{
    if (m_hold->requestUnderWay)
        return; // its answer settles again
    if (m_wanted && !m_hold->isHeld())
        acquire();
    else if (!m_wanted && m_hold->isHeld())
        release();
}

void ScreenSaverInhibitor::acquire()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || m_hold->route == Hold::Route::none)
        return;
    const bool viaPortal = m_hold->route == Hold::Route::portal;
    QDBusMessage call;
    if (viaPortal) {
        call = QDBusMessage::createMethodCall(portalService, portalPath, portalInhibit,
                                              QStringLiteral("Inhibit"));
        call << QString() << portalIdleFlag << QVariantMap{{QStringLiteral("reason"), m_reason}};
    } else {
        call = QDBusMessage::createMethodCall(screenSaverService, screenSaverPath,
                                              screenSaverService, QStringLiteral("Inhibit"));
        call << AppIdentity::displayName.toString() << m_reason;
    }
    m_hold->requestUnderWay = true;
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, callTimeoutMs), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, viaPortal](QDBusPendingCallWatcher *answer) {
                answer->deleteLater();
                m_hold->requestUnderWay = false;
                if (viaPortal) {
                    const QDBusPendingReply<QDBusObjectPath> reply = *answer;
                    if (reply.isError())
                        m_hold->route = Hold::Route::none;
                    else
                        m_hold->handle = reply.value();
                } else {
                    const QDBusPendingReply<uint> reply = *answer;
                    if (reply.isError())
                        m_hold->route = Hold::Route::portal; // and asked again there
                    else
                        m_hold->cookie = reply.value();
                }
                settle();
            });
}

void ScreenSaverInhibitor::release()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    QDBusMessage call;
    if (m_hold->cookie) {
        call = QDBusMessage::createMethodCall(screenSaverService, screenSaverPath,
                                              screenSaverService, QStringLiteral("UnInhibit"));
        call << *m_hold->cookie;
    } else if (m_hold->handle) {
        call = QDBusMessage::createMethodCall(portalService, m_hold->handle->path(), portalRequest,
                                              QStringLiteral("Close"));
    } else {
        return;
    }
    m_hold->cookie.reset();
    m_hold->handle.reset();
    // Nothing comes back that would change what is done next.
    bus.send(call);
}
