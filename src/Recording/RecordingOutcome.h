#pragma once

#include <QString>

#include <optional>

// How a recording ended: the file saved, or the text of why not.
struct RecordingOutcome
{
    std::optional<QString> savedPath;
    QString error;

    static RecordingOutcome saved(const QString &path) { return {path, {}}; }
    static RecordingOutcome failed(const QString &why) { return {std::nullopt, why}; }
};
