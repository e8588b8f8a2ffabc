#pragma once

#include <QString>

#include <optional>

// How the export of the saved links talks to the user. The application supplies a save dialog and
// an alert; automation calls the path-taking export instead.
class LocalM3UExportPrompts
{
public:
    virtual ~LocalM3UExportPrompts() = default;
    // Where to write the file, starting from the suggested name; nothing when the user cancels.
    virtual std::optional<QString> chooseExportFile(const QString &suggestedFileName) = 0;
    // The export could not be written; the description says why.
    virtual void showExportFailure(const QString &description) = 0;
};
