#pragma once

#include <QString>

#include <optional>

// Text trimmed of white space and line breaks; nothing when there was none or nothing is left.
inline std::optional<QString> trimmedText(const std::optional<QString> &text)
{
    if (!text)
        return std::nullopt;
    QString trimmed = text->trimmed();
    return trimmed.isEmpty() ? std::nullopt : std::optional(std::move(trimmed));
}
