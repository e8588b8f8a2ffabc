#include "App/AppMenus.h"

#include "App/AppTexts.h"
#include "Player/PlayerModel.h"
#include "Player/PlayerTiming.h"
#include "Player/ProgrammeGuide.h"
#include "UI/GuideAddressDialog.h"

#include <QApplication>
#include <QMenu>
#include <QMenuBar>

AppMenus::AppMenus(QMenuBar &menuBar, PlayerModel &model) : QObject(&menuBar), m_model(model)
{
    addFileMenu(menuBar);
    addPlaybackMenu(menuBar);
    connect(&model, &PlayerModel::isPlayingChanged, this, &AppMenus::updateTitles);
    connect(&model, &PlayerModel::isMutedChanged, this, &AppMenus::updateTitles);
    updateTitles();
}

void AppMenus::addFileMenu(QMenuBar &menuBar)
{
    QMenu *file = menuBar.addMenu(AppTexts::fileMenu.toString());
    QAction *open =
        file->addAction(AppTexts::openMedia.toString(), &m_model, [this] { m_model.openFile(); });
    open->setShortcut(QKeySequence::Open);
    file->addSeparator();
    file->addAction(AppTexts::guideAddress.toString(), &m_model, [this, &menuBar] {
        auto *dialog = new GuideAddressDialog(m_model.guide(), menuBar.window());
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->open();
    });
    file->addAction(AppTexts::refreshGuide.toString(), &m_model,
                    [this] { m_model.guide().refresh(); });
    file->addSeparator();
    QAction *quit =
        file->addAction(AppTexts::quit.toString(), qApp, &QApplication::closeAllWindows);
    quit->setShortcut(QKeySequence::Quit);
    quit->setMenuRole(QAction::QuitRole);
}

void AppMenus::addPlaybackMenu(QMenuBar &menuBar)
{
    QMenu *playback = menuBar.addMenu(AppTexts::playbackMenu.toString());
    m_playPause = playback->addAction(QString(), &m_model, [this] { m_model.togglePlayback(); });
    playback->addAction(AppTexts::stop.toString(), &m_model, [this] { m_model.stop(); });
    playback->addSeparator();
    for (int seconds : PlayerTiming::skipSteps) {
        playback->addAction(AppTexts::back.toString().arg(seconds), &m_model,
                            [this, seconds] { m_model.skip(-seconds); });
        playback->addAction(AppTexts::forward.toString().arg(seconds), &m_model,
                            [this, seconds] { m_model.skip(seconds); });
    }
    m_mute = playback->addAction(QString(), &m_model, [this] { m_model.toggleMute(); });
    m_mute->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_M));
}

void AppMenus::updateTitles()
{
    m_playPause->setText((m_model.isPlaying() ? AppTexts::pause : AppTexts::play).toString());
    m_mute->setText((m_model.isMuted() ? AppTexts::unmute : AppTexts::mute).toString());
}
