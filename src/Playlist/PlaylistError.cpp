#include "Playlist/PlaylistError.h"

QString localizedDescription(PlaylistError error)
{
    switch (error) {
    case PlaylistError::invalidEncoding:
        return QStringLiteral("The playlist text could not be read.");
    case PlaylistError::empty:
        return QStringLiteral("No playable address was found in the playlist.");
    }
    Q_UNREACHABLE();
}
