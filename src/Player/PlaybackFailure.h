#pragma once

#include <QString>

// Why media that was asked for does not play, in the words the user is shown.
enum class PlaybackFailure
{
    cannotOpen,    // missing, unreadable, refused by its server, or never answered
    unknownFormat, // no audio or video the engine can read
    nothingToPlay, // read, but it holds no audio or video
    unsupported,   // a kind of address or media the engine does not handle
    noData,        // a stream that sent nothing for the whole time-out
    other,
};

namespace PlaybackFailures {
// "Could not play “NAME”: the file could not be opened." The reason depends on whether the media
// is a local file or comes from the network.
QString notice(PlaybackFailure failure, const QString &name, bool isLocalFile);
} // namespace PlaybackFailures
