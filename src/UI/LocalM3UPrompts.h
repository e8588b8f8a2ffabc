#pragma once

#include <QString>

#include <optional>

// How the saved links' actions talk to the user. The application supplies a save dialog and
// alerts; automation calls the path-taking export instead.
class LocalM3UPrompts
{
public:
    virtual ~LocalM3UPrompts() = default;
    // Where to write the file, starting from the suggested name; nothing when the user cancels.
    virtual std::optional<QString> chooseExportFile(const QString &suggestedFileName) = 0;
    // The export could not be written; the description says why.
    virtual void showExportFailure(const QString &description) = 0;
    // The saved links could not be written; the description says why. It may come at any time
    // and again while an earlier one is still shown, so it must not wait for the user.
    virtual void showSaveFailure(const QString &description) = 0;
};
