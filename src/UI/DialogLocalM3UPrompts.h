#pragma once

#include "UI/LocalM3UPrompts.h"

#include <QMessageBox>
#include <QPointer>
#include <QWidget>

// The save dialog and the alerts of the saved links, over the given window: the export's modal;
// a failed save's window-modal without a nested event loop, one at a time showing the latest.
class DialogLocalM3UPrompts final : public LocalM3UPrompts
{
public:
    explicit DialogLocalM3UPrompts(QWidget *window = nullptr) : m_window(window) {}

    std::optional<QString> chooseExportFile(const QString &suggestedFileName) override;
    void showExportFailure(const QString &description) override;
    void showSaveFailure(const QString &description) override;

private:
    QPointer<QWidget> m_window;
    QPointer<QMessageBox> m_saveFailure;
};
