#pragma once

#include <QJsonArray>
#include <QJsonValue>
#include <QString>

#include <functional>
#include <optional>

class PlayerRecordingController;
class QObject;

// The recorder as the control socket drives and reads it: start_recording, stop_recording and the
// read-only recording properties.
class RecordingControl
{
public:
    using Reply = std::function<void(const QString &error, const QJsonValue &data)>;

    RecordingControl(PlayerRecordingController &recorder, QObject &context)
        : m_recorder(recorder), m_context(context)
    {}

    // Nothing for a name that is not a recording property.
    std::optional<QJsonValue> get(const QString &name) const;
    // [{"quality": "normal"|"hd", "path": ABSOLUTE, "stopAfter": TEXT}]: replies once recording
    // (null) or once the start has failed (its message).
    void start(const QJsonArray &arguments, const Reply &reply);
    // Replies with the saved file's path once it is written, or with why it was not.
    void stop(const QJsonArray &arguments, const Reply &reply);

private:
    // Calls done once the recorder has left the state it is in now.
    void whenStateLeaves(std::function<void()> done);

    PlayerRecordingController &m_recorder;
    QObject &m_context;
};
