#include "App/RecordingControl.h"

#include "Recording/PlayerRecordingController.h"

#include <QDir>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace {

const QString invalidParameter = u"invalid parameter"_s;

QString stateName(PlayerRecordingState state)
{
    switch (state) {
    case PlayerRecordingState::idle:
        break;
    case PlayerRecordingState::preparing:
        return u"preparing"_s;
    case PlayerRecordingState::recording:
        return u"recording"_s;
    case PlayerRecordingState::stopping:
        return u"stopping"_s;
    }
    return u"idle"_s;
}

QJsonValue textOrNull(const std::optional<QString> &text)
{
    return text ? QJsonValue(*text) : QJsonValue(QJsonValue::Null);
}

std::optional<PlayerRecordingQuality> quality(const QJsonValue &value)
{
    if (value.isUndefined() || value == u"normal"_s)
        return PlayerRecordingQuality::normal;
    if (value == u"hd"_s)
        return PlayerRecordingQuality::hd;
    return std::nullopt;
}

} // namespace

std::optional<QJsonValue> RecordingControl::get(const QString &name) const
{
    if (name == u"recordingState")
        return stateName(m_recorder.state());
    if (name == u"recordingDuration")
        return m_recorder.duration();
    if (name == u"recordingSavedPath") {
        const std::optional<QUrl> &url = m_recorder.lastSavedURL();
        return url ? QJsonValue(url->toLocalFile()) : QJsonValue(QJsonValue::Null);
    }
    if (name == u"recordingError")
        return textOrNull(m_recorder.errorMessage());
    if (name == u"recordingPanelText")
        return textOrNull(m_recorder.panelText());
    return std::nullopt;
}

void RecordingControl::start(const QJsonArray &arguments, const Reply &reply)
{
    const QJsonObject options = arguments.size() == 1 ? arguments.at(0).toObject() : QJsonObject();
    const QJsonValue stopAfter = options.value(u"stopAfter"_s);
    const std::optional<PlayerRecordingQuality> chosen = quality(options.value(u"quality"_s));
    const QString path = options.value(u"path"_s).toString();
    if (arguments.size() != 1 || !arguments.at(0).isObject() || !chosen ||
        !QDir::isAbsolutePath(path) || !(stopAfter.isUndefined() || stopAfter.isString()))
        return reply(invalidParameter, {});
    if (m_recorder.state() != PlayerRecordingState::idle)
        return reply(u"a recording is already running"_s, {});
    if (const std::optional<QString> refusal =
            m_recorder.startRecording(*chosen, QDir::cleanPath(path), stopAfter.toString()))
        return reply(*refusal, {});
    whenStateLeaves([this, reply] {
        if (m_recorder.state() == PlayerRecordingState::recording)
            return reply({}, {});
        reply(m_recorder.errorMessage().value_or(QString()), {});
    });
}

void RecordingControl::stop(const QJsonArray &arguments, const Reply &reply)
{
    if (!arguments.isEmpty())
        return reply(invalidParameter, {});
    if (m_recorder.state() != PlayerRecordingState::recording)
        return reply(u"not recording"_s, {});
    m_recorder.stopRecording();
    whenStateLeaves([this, reply] {
        if (const std::optional<QUrl> &url = m_recorder.lastSavedURL())
            return reply({}, url->toLocalFile());
        reply(m_recorder.errorMessage().value_or(QString()), {});
    });
}

void RecordingControl::whenStateLeaves(std::function<void()> done)
{
    const PlayerRecordingState from = m_recorder.state();
    auto connection = std::make_shared<QMetaObject::Connection>();
    *connection = QObject::connect(&m_recorder, &PlayerRecordingController::stateChanged,
                                   &m_context, [this, from, connection, done] {
                                       if (m_recorder.state() == from)
                                           return;
                                       QObject::disconnect(*connection);
                                       done();
                                   });
}
