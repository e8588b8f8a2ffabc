#pragma once

#include "UI/LocalM3UExportPrompts.h"

#include <QPointer>
#include <QWidget>

// The save dialog and the failure alert of the saved links' export, modal over the given window.
class DialogLocalM3UExportPrompts final : public LocalM3UExportPrompts
{
public:
    explicit DialogLocalM3UExportPrompts(QWidget *window = nullptr) : m_window(window) {}

    std::optional<QString> chooseExportFile(const QString &suggestedFileName) override;
    void showExportFailure(const QString &description) override;

private:
    QPointer<QWidget> m_window;
};
