#include "App/ControlCommands.h"

#include "App/ContentControlProperties.h"
#include "App/ControlValues.h"
#include "App/WindowScreenshot.h"
#include "Player/PlayerModel.h"
#include "Player/ProgrammeGuide.h"
#include "Playlist/ChannelListModel.h"
#include "Playlist/PlaylistJson.h"
#include "Playlist/PlaylistTexts.h"
#include "UI/ContentState.h"
#include "UI/ContentView.h"
#include "UI/LocalM3UActions.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QKeyEvent>
#include <QKeySequence>
#include <QMetaProperty>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include <cmath>
#include <map>

using namespace Qt::StringLiterals;

namespace {

const QString invalidParameter = u"invalid parameter"_s;

// The window's own state that the socket publishes, as QWidget properties.
const QStringList windowProperties = {u"windowTitle"_s, u"width"_s, u"height"_s,
                                      u"isActiveWindow"_s};

bool isNumber(const QJsonValue &value)
{
    return value.isDouble() && std::isfinite(value.toDouble());
}

bool isIndex(const QJsonValue &value)
{
    return isNumber(value) && value.toDouble() >= 0 &&
           value.toDouble() == std::floor(value.toDouble());
}

// An optional string argument: missing or null is none.
bool optionalText(const QJsonArray &arguments, qsizetype at, std::optional<QString> &text)
{
    if (arguments.size() <= at || arguments.at(at).isNull())
        return true;
    if (!arguments.at(at).isString())
        return false;
    text = arguments.at(at).toString();
    return true;
}

// A text and an optional display name after it, as [TEXT] or [TEXT, NAME]; false for anything else.
bool textAndOptionalName(const QJsonArray &arguments, QString &text,
                         std::optional<QString> &displayName)
{
    if (arguments.isEmpty() || arguments.size() > 2 || !arguments.at(0).isString() ||
        !optionalText(arguments, 1, displayName))
        return false;
    text = arguments.at(0).toString();
    return true;
}

std::optional<QJsonValue> windowProperty(const QWidget &window, const QString &name)
{
    if (!windowProperties.contains(name))
        return std::nullopt;
    return ControlValues::toJson(window.property(name.toLatin1().constData()));
}

struct KeyPress
{
    int key = 0;
    Qt::KeyboardModifiers modifiers;
    bool isAutoRepeat = false;
};

// "Right", ["Command", "Shift"], "autorepeat" → the key event a keyboard would give.
std::optional<KeyPress> keyPress(const QJsonArray &arguments)
{
    if (arguments.isEmpty() || !arguments.at(0).isString())
        return std::nullopt;
    const QKeySequence sequence = QKeySequence::fromString(arguments.at(0).toString());
    if (sequence.count() != 1 || sequence[0].keyboardModifiers() != Qt::NoModifier)
        return std::nullopt;
    KeyPress press{sequence[0].key(), Qt::NoModifier, false};
    if (press.key == Qt::Key_unknown || press.key == 0)
        return std::nullopt; // a name no keyboard has
    static const std::map<QString, Qt::KeyboardModifier> modifiers = {
        {u"Command"_s, Qt::ControlModifier},
        {u"Control"_s, Qt::MetaModifier},
        {u"Option"_s, Qt::AltModifier},
        {u"Shift"_s, Qt::ShiftModifier}};
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString name = arguments.at(i).toString();
        if (name == u"autorepeat")
            press.isAutoRepeat = true;
        else if (const auto modifier = modifiers.find(name); modifier != modifiers.end())
            press.modifiers |= modifier->second;
        else
            return std::nullopt;
    }
    return press;
}

// What the key types into a text field, as a keyboard would send it.
QString typedText(const KeyPress &press)
{
    if (press.modifiers & (Qt::ControlModifier | Qt::MetaModifier | Qt::AltModifier))
        return {};
    if (press.key == Qt::Key_Space)
        return u" "_s;
    if (press.key >= Qt::Key_A && press.key <= Qt::Key_Z) {
        const QChar letter(u'a' + (press.key - Qt::Key_A));
        return press.modifiers & Qt::ShiftModifier ? QString(letter.toUpper()) : QString(letter);
    }
    if (press.key >= Qt::Key_0 && press.key <= Qt::Key_9)
        return QString(QChar(u'0' + (press.key - Qt::Key_0)));
    return {};
}

} // namespace

ControlCommands::ControlCommands(PlayerModel &model, LocalM3UActions &localM3U,
                                 ContentView &content, PlayerRecordingController &recorder,
                                 QWidget &window, QObject *parent)
    : QObject(parent), m_model(model), m_localM3U(localM3U), m_content(content),
      m_recording(recorder, *this), m_window(window)
{}

void ControlCommands::run(const QJsonArray &command, const Reply &reply)
{
    // The model's transport actions: none or one number as argument.
    const auto action = [](auto modelFunction) -> Handler {
        return [modelFunction](ControlCommands &self, const QJsonArray &arguments,
                               const Reply &respond) {
            self.modelAction(modelFunction, arguments, respond);
        };
    };
    static const std::map<QString, Handler> handlers = {
        {u"get_property"_s, &ControlCommands::getProperty},
        {u"set_property"_s, &ControlCommands::setProperty},
        {u"filtered_count"_s, &ControlCommands::filteredCount},
        {u"screenshot"_s, &ControlCommands::screenshot},
        {u"playlist_entry"_s, &ControlCommands::playlistEntry},
        {u"guide_now"_s,
         [](ControlCommands &self, const QJsonArray &arguments, const Reply &respond) {
             self.guideProgramme(arguments, respond, false);
         }},
        {u"guide_next"_s,
         [](ControlCommands &self, const QJsonArray &arguments, const Reply &respond) {
             self.guideProgramme(arguments, respond, true);
         }},
        {u"play"_s, &ControlCommands::play},
        {u"openRemote"_s, &ControlCommands::openRemote},
        {u"stop"_s, action(&PlayerModel::stop)},
        {u"togglePlayback"_s, action(&PlayerModel::togglePlayback)},
        {u"skip"_s, action(&PlayerModel::skip)},
        {u"setVolume"_s, &ControlCommands::setVolume},
        {u"adjustVolume"_s, action(&PlayerModel::adjustVolume)},
        {u"toggleMute"_s, action(&PlayerModel::toggleMute)},
        {u"local_entries"_s, &ControlCommands::localEntries},
        {u"save_to_local_m3u"_s, &ControlCommands::saveToLocalM3U},
        {u"import_local_m3u"_s, &ControlCommands::importLocalM3U},
        {u"export_local_m3u"_s, &ControlCommands::exportLocalM3U},
        {u"restore_local_m3u"_s, &ControlCommands::restoreLocalM3U},
        {u"key"_s, &ControlCommands::key},
        {u"start_recording"_s,
         [](ControlCommands &self, const QJsonArray &arguments, const Reply &respond) {
             self.m_recording.start(arguments, respond);
         }},
        {u"stop_recording"_s,
         [](ControlCommands &self, const QJsonArray &arguments, const Reply &respond) {
             self.m_recording.stop(arguments, respond);
         }},
        {u"quit"_s, &ControlCommands::quit},
    };
    if (command.isEmpty() || !command.at(0).isString()) {
        reply(u"the command must be an array starting with a name"_s, {});
        return;
    }
    const auto handler = handlers.find(command.at(0).toString());
    if (handler == handlers.end()) {
        reply(u"unknown command: "_s + command.at(0).toString(), {});
        return;
    }
    QJsonArray arguments = command;
    arguments.removeFirst();
    handler->second(*this, arguments, reply);
}

void ControlCommands::getProperty(const QJsonArray &arguments, const Reply &reply)
{
    if (arguments.size() != 1 || !arguments.at(0).isString()) {
        reply(invalidParameter, {});
        return;
    }
    const QString name = arguments.at(0).toString();
    const QMetaObject &meta = PlayerModel::staticMetaObject;
    // Only the model's own properties, not those every QObject has.
    const int index = meta.indexOfProperty(name.toLatin1().constData());
    if (index >= meta.propertyOffset()) {
        if (std::optional<QJsonValue> value =
                ControlValues::toJson(meta.property(index).read(&m_model))) {
            reply({}, *value);
            return;
        }
    }
    const QMetaObject &guideMeta = ProgrammeGuide::staticMetaObject;
    if (const int guideIndex = guideMeta.indexOfProperty(name.toLatin1().constData());
        guideIndex >= guideMeta.propertyOffset()) {
        reply({}, guideMeta.property(guideIndex).read(&m_model.guide()).toString());
        return;
    }
    if (std::optional<QJsonValue> value = ContentControlProperties(m_content).get(name)) {
        reply({}, *value);
        return;
    }
    if (std::optional<QJsonValue> value = m_recording.get(name)) {
        reply({}, *value);
        return;
    }
    if (std::optional<QJsonValue> value = windowProperty(m_window, name)) {
        reply({}, *value);
        return;
    }
    reply(u"property not found"_s, {});
}

void ControlCommands::setProperty(const QJsonArray &arguments, const Reply &reply)
{
    if (arguments.size() != 2 || !arguments.at(0).isString())
        return reply(invalidParameter, {});
    const QString name = arguments.at(0).toString();
    if (name == u"guideAddress") {
        if (!arguments.at(1).isString() ||
            !m_model.guide().setAddressText(arguments.at(1).toString()))
            return reply(u"not an http, https or file address"_s, {});
        return reply({}, {});
    }
    if (!ContentControlProperties::isKnown(name))
        return reply(u"property not found or read-only: "_s + name, {});
    if (const std::optional<QString> refusal =
            ContentControlProperties(m_content).set(name, arguments.at(1)))
        return reply(*refusal, {});
    reply({}, {});
}

void ControlCommands::filteredCount(const QJsonArray &arguments, const Reply &reply)
{
    if (!arguments.isEmpty())
        return reply(invalidParameter, {});
    // The saved links count once they are read; until then the panel lists none of them.
    LocalM3UStore &store = m_localM3U.store();
    if (!store.isLoaded()) {
        connect(
            &store, &LocalM3UStore::loadedChanged, this,
            [this, arguments, reply] { filteredCount(arguments, reply); },
            Qt::SingleShotConnection);
        return;
    }
    ChannelListModel &list = m_content.state().displayedChannels();
    if (!list.isFiltering())
        return reply({}, list.filteredCount());
    // A long list is still being filtered: answer with the rows of the newest filter.
    auto *connection = new QMetaObject::Connection;
    *connection = connect(&list, &ChannelListModel::rowsSettled, this, [&list, reply, connection] {
        if (list.isFiltering())
            return;
        QObject::disconnect(*connection);
        delete connection;
        reply({}, list.filteredCount());
    });
}

void ControlCommands::screenshot(const QJsonArray &arguments, const Reply &reply)
{
    if (arguments.size() != 1 || !arguments.at(0).isString())
        return reply(invalidParameter, {});
    if (const std::optional<QString> failure =
            WindowScreenshot::save(m_window, arguments.at(0).toString()))
        return reply(u"cannot write "_s + arguments.at(0).toString() + u": "_s + *failure, {});
    reply({}, {});
}

const PlaylistEntry *ControlCommands::playlistArgument(const QJsonArray &arguments,
                                                       const Reply &reply)
{
    if (arguments.size() != 1 || !isIndex(arguments.at(0))) {
        reply(invalidParameter, {});
        return nullptr;
    }
    const auto index = qsizetype(arguments.at(0).toDouble());
    if (index >= m_model.playlist().size()) {
        reply(u"index out of range"_s, {});
        return nullptr;
    }
    return &m_model.playlist().at(index);
}

void ControlCommands::playlistEntry(const QJsonArray &arguments, const Reply &reply)
{
    if (const PlaylistEntry *entry = playlistArgument(arguments, reply))
        reply({}, QJsonDocument::fromJson(PlaylistJson::encode(*entry)).object());
}

void ControlCommands::guideProgramme(const QJsonArray &arguments, const Reply &reply, bool next)
{
    const PlaylistEntry *entry = playlistArgument(arguments, reply);
    if (!entry)
        return;
    const GuideSchedule &schedule = m_model.guide().schedule();
    const qint64 time = ProgrammeGuide::now();
    const std::optional<GuideProgramme> programme =
        next ? schedule.nextAfter(entry->id, time) : schedule.onAt(entry->id, time);
    if (!programme)
        return reply({}, QJsonValue::Null);
    const auto iso = [](qint64 at) {
        return QDateTime::fromMSecsSinceEpoch(at).toUTC().toString(Qt::ISODate);
    };
    reply({}, QJsonObject{{u"title"_s, programme->title},
                          {u"start"_s, iso(programme->start)},
                          {u"stop"_s, iso(programme->stop)}});
}

void ControlCommands::play(const QJsonArray &arguments, const Reply &reply)
{
    std::optional<QString> displayName;
    if (arguments.isEmpty() || arguments.size() > 3 || !arguments.at(0).isString() ||
        !optionalText(arguments, 1, displayName) ||
        (arguments.size() == 3 && !arguments.at(2).isBool())) {
        reply(invalidParameter, {});
        return;
    }
    const QString text = arguments.at(0).toString();
    const std::optional<WebAddress> url = QDir::isAbsolutePath(text)
                                              ? WebAddress::fromLocalFile(QDir::cleanPath(text))
                                              : WebAddress::fromText(text);
    if (!url || !url->hasScheme()) {
        reply(u"not an absolute path or address: "_s + text, {});
        return;
    }
    m_model.play(*url, displayName, arguments.size() == 3 && arguments.at(2).toBool());
    reply({}, {});
}

void ControlCommands::openRemote(const QJsonArray &arguments, const Reply &reply)
{
    QString address;
    std::optional<QString> displayName;
    if (!textAndOptionalName(arguments, address, displayName))
        return reply(invalidParameter, {});
    // Once the address has opened, or its playlist has loaded or failed: the answer is the
    // failure the window shows, if any.
    m_model.openRemote(address, displayName).then(this, [this, reply] {
        reply(m_model.errorMessage().value_or(QString()), {});
    });
}

void ControlCommands::modelAction(void (PlayerModel::*action)(), const QJsonArray &arguments,
                                  const Reply &reply)
{
    if (!arguments.isEmpty())
        return reply(invalidParameter, {});
    (m_model.*action)();
    reply({}, {});
}

void ControlCommands::modelAction(void (PlayerModel::*action)(double), const QJsonArray &arguments,
                                  const Reply &reply)
{
    if (arguments.size() != 1 || !isNumber(arguments.at(0)))
        return reply(invalidParameter, {});
    (m_model.*action)(arguments.at(0).toDouble());
    reply({}, {});
}

void ControlCommands::setVolume(const QJsonArray &arguments, const Reply &reply)
{
    if (arguments.size() != 1 || !isNumber(arguments.at(0)))
        return reply(invalidParameter, {});
    // The volume moves on a grid of hundredths, as every other way of setting it does.
    m_model.setVolume(std::round(arguments.at(0).toDouble() * 100) / 100);
    reply({}, {});
}

void ControlCommands::localEntries(const QJsonArray &arguments, const Reply &reply)
{
    if (!arguments.isEmpty())
        return reply(invalidParameter, {});
    LocalM3UStore &store = m_localM3U.store();
    store.waitForLoad();
    reply({}, QJsonDocument::fromJson(PlaylistJson::encode(store.entries())).array());
}

void ControlCommands::saveToLocalM3U(const QJsonArray &arguments, const Reply &reply)
{
    if (const PlaylistEntry *entry = playlistArgument(arguments, reply)) {
        m_localM3U.saveToLocalM3U(*entry);
        replyWhenSaved(reply, {});
    }
}

void ControlCommands::importLocalM3U(const QJsonArray &arguments, const Reply &reply)
{
    QString path;
    std::optional<QString> displayName;
    if (!textAndOptionalName(arguments, path, displayName))
        return reply(invalidParameter, {});
    m_localM3U.importLocalPlaylistFile(path, displayName).then(this, [this, reply](bool imported) {
        if (imported)
            replyWhenSaved(reply, double(m_localM3U.store().entries().size()));
        else
            reply(m_model.errorMessage().value_or(u"the import was superseded"_s), {});
    });
}

void ControlCommands::restoreLocalM3U(const QJsonArray &arguments, const Reply &reply)
{
    if (!arguments.isEmpty())
        return reply(invalidParameter, {});
    m_localM3U.store().waitForLoad();
    if (!m_localM3U.store().hasPrevious())
        return reply(u"no replaced links are kept"_s, {});
    m_localM3U.restorePreviousLinks();
    replyWhenSaved(reply, double(m_localM3U.store().entries().size()));
}

void ControlCommands::replyWhenSaved(const Reply &reply, const QJsonValue &data)
{
    m_localM3U.store().whenSaved(this, [reply, data](const LocalM3UStore::SaveOutcome &outcome) {
        if (outcome)
            reply(PlaylistTexts::saveFailed.toString() + u": "_s + *outcome, {});
        else
            reply({}, data);
    });
}

void ControlCommands::exportLocalM3U(const QJsonArray &arguments, const Reply &reply)
{
    if (arguments.size() != 1 || !arguments.at(0).isString())
        return reply(invalidParameter, {});
    // A relative path would land wherever the player happened to be started.
    if (!QDir::isAbsolutePath(arguments.at(0).toString()))
        return reply(u"not an absolute path: "_s + arguments.at(0).toString(), {});
    m_localM3U.store().waitForLoad();
    if (m_localM3U.store().entries().isEmpty())
        return reply({}, {}); // nothing saved, nothing written
    if (const std::optional<QString> failure =
            m_localM3U.exportLocalPlaylist(arguments.at(0).toString()))
        return reply(PlaylistTexts::exportFailed.toString() + u": "_s + *failure, {});
    reply({}, QFileInfo(arguments.at(0).toString()).fileName());
}

void ControlCommands::key(const QJsonArray &arguments, const Reply &reply)
{
    const std::optional<KeyPress> press = keyPress(arguments);
    if (!press)
        return reply(invalidParameter, {});
    // Sent where a keyboard's key would go: the window with the keyboard focus.
    QWindow *window = QGuiApplication::focusWindow();
    if (!window)
        window = m_window.windowHandle();
    if (!window)
        return reply(u"no window to send the key to"_s, {});
    // Pressed from the event loop, not inside the socket's handler: a key may open a dialog that
    // runs a loop of its own. The reply follows once the key has been handled.
    QMetaObject::invokeMethod(
        this,
        [window = QPointer<QWindow>(window), press = *press, reply] {
            if (!window)
                return reply(u"no window to send the key to"_s, {});
            const QString text = typedText(press);
            QKeyEvent down(QEvent::KeyPress, press.key, press.modifiers, text, press.isAutoRepeat);
            QCoreApplication::sendEvent(window, &down);
            QKeyEvent up(QEvent::KeyRelease, press.key, press.modifiers, text, press.isAutoRepeat);
            QCoreApplication::sendEvent(window, &up);
            reply({}, {});
        },
        Qt::QueuedConnection);
}

void ControlCommands::quit(const QJsonArray &arguments, const Reply &reply)
{
    if (!arguments.isEmpty())
        return reply(invalidParameter, {});
    reply({}, {});
    // From the event loop, once the reply is on its way.
    QTimer::singleShot(0, qApp, [] { QCoreApplication::quit(); });
}
