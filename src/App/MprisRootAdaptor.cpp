#include "App/MprisRootAdaptor.h"

#include "Base/AppIdentity.h"
#include "MediaMimeTypes.h"
#include "Player/MediaSchemes.h"

#include <QCoreApplication>
#include <QTimer>

MprisRootAdaptor::MprisRootAdaptor(QObject *host, std::function<void()> raise)
    : QDBusAbstractAdaptor(host), m_raise(std::move(raise))
{}

QString MprisRootAdaptor::identity() const
{
    return AppIdentity::displayName.toString();
}

QString MprisRootAdaptor::desktopEntry() const
{
    return AppIdentity::desktopEntry.toString();
}

QStringList MprisRootAdaptor::supportedUriSchemes() const
{
    QStringList schemes;
    for (QStringView scheme : MediaSchemes::playable)
        schemes.append(scheme.toString());
    return schemes;
}

QStringList MprisRootAdaptor::supportedMimeTypes() const
{
    QStringList types;
    for (QStringView type : MediaMimeTypes::all)
        types.append(type.toString());
    return types;
}

void MprisRootAdaptor::Raise()
{
    m_raise();
}

void MprisRootAdaptor::Quit()
{
    // From the event loop, once the call's answer is on its way.
    QTimer::singleShot(0, qApp, [] { QCoreApplication::quit(); });
}
