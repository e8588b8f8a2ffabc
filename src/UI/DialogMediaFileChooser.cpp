#include "UI/DialogMediaFileChooser.h"

#include "Player/MediaFileTypes.h"
#include "Player/PlayerTexts.h"

#include <QFileDialog>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace {
std::optional<QString> runDialog(QFileDialog &dialog)
{
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return dialog.selectedFiles().constFirst();
}
} // namespace

std::optional<QString> DialogMediaFileChooser::chooseMediaFile()
{
    QStringList patterns;
    // Both letter cases: file systems here compare names case-sensitively.
    for (QStringView extension : MediaFileTypes::extensions)
        patterns << u"*."_s + extension.toString() << u"*."_s + extension.toString().toUpper();
    QFileDialog dialog(m_window, PlayerTexts::openMediaDialogTitle.toString());
    dialog.setNameFilter(u"Media (%1)"_s.arg(patterns.join(u' ')));
    return runDialog(dialog);
}

std::optional<QString> DialogMediaFileChooser::choosePlaylistFile()
{
    QFileDialog dialog(m_window, PlayerTexts::importPlaylistDialogTitle.toString());
    dialog.setLabelText(QFileDialog::Accept, PlayerTexts::importPlaylistDialogButton.toString());
    dialog.setNameFilter(u"M3U Playlist (*.m3u *.M3U)"_s);
    return runDialog(dialog);
}
