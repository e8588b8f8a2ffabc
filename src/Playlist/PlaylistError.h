#pragma once

#include <QString>

// Why playlist text gave no channels. The callers that decode and parse a playlist raise these.
enum class PlaylistError
{
    invalidEncoding,
    empty,
};

// The user-facing description of the failure.
QString localizedDescription(PlaylistError error);
