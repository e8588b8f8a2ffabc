#pragma once

#include "Player/MediaFileChooser.h"

#include <QPointer>
#include <QWidget>

// The file dialogs of Open Media and of the playlist import, modal over the given window.
class DialogMediaFileChooser final : public MediaFileChooser
{
public:
    explicit DialogMediaFileChooser(QWidget *window = nullptr) : m_window(window) {}
    void setWindow(QWidget *window) { m_window = window; }

    std::optional<QString> chooseMediaFile() override;
    std::optional<QString> choosePlaylistFile() override;

private:
    QPointer<QWidget> m_window;
};
