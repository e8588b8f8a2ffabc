#pragma once

#include <QString>

#include <optional>

// How the player model asks the user for a file. The application supplies dialogs; tests and
// automation call the model's path-taking functions instead.
class MediaFileChooser
{
public:
    virtual ~MediaFileChooser() = default;
    // A media file to play, or nothing when the user cancels.
    virtual std::optional<QString> chooseMediaFile() = 0;
    // A playlist file to import, or nothing when the user cancels.
    virtual std::optional<QString> choosePlaylistFile() = 0;
};
