#include "App/MprisService.h"

#include "App/MprisPlayerAdaptor.h"
#include "App/MprisRootAdaptor.h"
#include "Base/AppIdentity.h"
#include "Player/PlayerModel.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QMetaProperty>
#include <QTimer>

#include <cmath>

namespace {

const QString objectPath = QStringLiteral("/org/mpris/MediaPlayer2");
const QString playerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");
// A position further than this from where playing would have taken it was sought.
constexpr double seekTolerance = 1.0;

} // namespace

MprisService::MprisService(PlayerModel &model, Actions actions, QObject *parent)
    : QObject(parent), m_model(model),
      m_player(new MprisPlayerAdaptor(this, model, std::move(actions.open)))
{
    new MprisRootAdaptor(this, std::move(actions.raise));
    connect(&model, &PlayerModel::isPlayingChanged, this, [this] {
        markChanged({"PlaybackStatus", "CanPlay", "CanPause"});
    });
    for (auto signal : {&PlayerModel::titleChanged, &PlayerModel::durationChanged,
                        &PlayerModel::currentURLChanged, &PlayerModel::mediaLoadIDChanged,
                        &PlayerModel::isLiveStreamChanged, &PlayerModel::youtubeContentChanged,
                        &PlayerModel::okVideoContentChanged}) {
        connect(&model, signal, this, [this] {
            markChanged({"Metadata", "PlaybackStatus", "CanPlay", "CanPause", "CanSeek",
                         "CanGoNext", "CanGoPrevious"});
        });
    }
    connect(&model, &PlayerModel::volumeChanged, this, [this] { markChanged({"Volume"}); });
    connect(&model, &PlayerModel::currentTimeChanged, this, &MprisService::watchPosition);
    m_sinceLastPosition.start();
}

MprisService::~MprisService()
{
    if (!m_serviceName.isEmpty())
        QDBusConnection::sessionBus().unregisterService(m_serviceName);
}

bool MprisService::publish()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.registerObject(objectPath, this))
        return false;
    const QString name =
        QStringLiteral("org.mpris.MediaPlayer2.") + AppIdentity::executableName.toString();
    // Registering a name is one short call to the bus daemon, made once at start.
    for (const QString &candidate :
         {name, name + QStringLiteral(".instance%1").arg(QCoreApplication::applicationPid())}) {
        if (bus.registerService(candidate)) {
            m_serviceName = candidate;
            return true;
        }
    }
    return false;
}

void MprisService::markChanged(std::initializer_list<const char *> names)
{
    // Changes that come together (a load changes title, length and state) go out as one signal.
    if (m_changed.isEmpty())
        QTimer::singleShot(0, this, &MprisService::announceChanges);
    for (const char *name : names)
        m_changed.insert(QString::fromLatin1(name));
}

void MprisService::announceChanges()
{
    QVariantMap values;
    const QMetaObject *meta = m_player->metaObject();
    for (const QString &name : std::as_const(m_changed)) {
        const QMetaProperty property = meta->property(meta->indexOfProperty(name.toLatin1()));
        values.insert(name, property.read(m_player));
    }
    m_changed.clear();
    if (m_serviceName.isEmpty())
        return;
    QDBusMessage signal =
        QDBusMessage::createSignal(objectPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                   QStringLiteral("PropertiesChanged"));
    signal << playerInterface << values << QStringList();
    QDBusConnection::sessionBus().send(signal);
}

void MprisService::watchPosition()
{
    const double position = m_model.currentTime();
    const double played = m_model.isPlaying() ? m_sinceLastPosition.elapsed() / 1000.0 : 0;
    const bool jumped = std::isfinite(position) && std::isfinite(m_lastPosition) &&
                        std::abs(position - (m_lastPosition + played)) > seekTolerance;
    m_lastPosition = position;
    m_sinceLastPosition.restart();
    if (jumped)
        Q_EMIT m_player->Seeked(m_player->position());
}
