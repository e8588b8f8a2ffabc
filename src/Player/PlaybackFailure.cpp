#include "Player/PlaybackFailure.h"

#include "Player/PlayerTexts.h"
#include "Player/PlayerTiming.h"

namespace {

QString reason(PlaybackFailure failure, bool isLocalFile)
{
    switch (failure) {
    case PlaybackFailure::cannotOpen:
        return isLocalFile ? QStringLiteral("the file is missing or cannot be read")
                           : QStringLiteral("the server refused it, does not have it or could "
                                            "not be reached");
    case PlaybackFailure::unknownFormat:
        return QStringLiteral("it is not audio or video in a format the player reads");
    case PlaybackFailure::nothingToPlay:
        return QStringLiteral("it holds no audio or video");
    case PlaybackFailure::unsupported:
        return QStringLiteral("the player does not handle this kind of media");
    case PlaybackFailure::noData:
        return QStringLiteral("no data arrived for %1 seconds")
            .arg(std::chrono::seconds(PlayerTiming::streamDataTimeout).count());
    case PlaybackFailure::other:
        break;
    }
    return QStringLiteral("it could not be played");
}

} // namespace

QString PlaybackFailures::notice(PlaybackFailure failure, const QString &name, bool isLocalFile)
{
    return PlayerTexts::couldNotPlay.toString().arg(name, reason(failure, isLocalFile));
}
