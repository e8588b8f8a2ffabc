#pragma once

#include <QJsonValue>
#include <QVariant>

#include <optional>

// Published values as the control socket sends them: absent optionals as null, ids and addresses
// as text, web contents as objects and a channel list as its length. Nothing for a type the socket
// does not know.
class ControlValues
{
public:
    ControlValues() = delete;

    static std::optional<QJsonValue> toJson(const QVariant &value);
};
