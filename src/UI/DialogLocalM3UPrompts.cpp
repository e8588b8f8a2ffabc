#include "UI/DialogLocalM3UPrompts.h"

#include "Playlist/PlaylistTexts.h"

#include <QDir>
#include <QFileDialog>
#include <QMessageBox>

using namespace Qt::StringLiterals;

std::optional<QString> DialogLocalM3UPrompts::chooseExportFile(const QString &suggestedFileName)
{
    QFileDialog dialog(m_window, PlaylistTexts::exportDialogTitle.toString());
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setLabelText(QFileDialog::Accept, PlaylistTexts::exportDialogButton.toString());
    dialog.setNameFilter(u"M3U Playlist (*.m3u)"_s);
    dialog.setDefaultSuffix(PlaylistTexts::exportFileExtension.toString());
    dialog.setDirectory(QDir::home());
    dialog.selectFile(suggestedFileName);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return dialog.selectedFiles().constFirst();
}

void DialogLocalM3UPrompts::showExportFailure(const QString &description)
{
    QMessageBox alert(QMessageBox::Warning, PlaylistTexts::exportFailed.toString(),
                      PlaylistTexts::exportFailed.toString(), QMessageBox::Ok, m_window);
    alert.setInformativeText(description);
    alert.exec();
}

void DialogLocalM3UPrompts::showSaveFailure(const QString &description)
{
    const QString text = description + u"\n\n"_s + PlaylistTexts::saveFailedAdvice.toString();
    if (m_saveFailure) {
        m_saveFailure->setInformativeText(text);
        return;
    }
    m_saveFailure =
        new QMessageBox(QMessageBox::Warning, PlaylistTexts::saveFailed.toString(),
                        PlaylistTexts::saveFailed.toString(), QMessageBox::Ok, m_window);
    m_saveFailure->setAttribute(Qt::WA_DeleteOnClose);
    m_saveFailure->setInformativeText(text);
    m_saveFailure->open();
}
