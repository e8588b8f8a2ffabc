#pragma once

#include "Playlist/PlaylistEntry.h"
#include "Web/PlayerViewServices.h"

#include <QList>
#include <QPointer>
#include <QUrl>
#include <QWidget>

#include <optional>

class ChannelLogoLoader;
class ContentState;
class LinkEditorDialog;
class LocalM3UActions;
class LocalM3UPanel;
class NetworkPanel;
class PlayerArea;
class PlayerControlBar;
class PlayerModel;
class QGraphicsOpacityEffect;
class QMessageBox;
class QPropertyAnimation;
class SidebarView;
class TitleBarHandler;

// The one window's content: the sidebar with its two panels beside the picture, and the control
// bar under both (so the bar keeps its width in a small window); in full screen the picture takes
// the screen and the bar floats over its bottom while the controls are shown. It keeps the window's
// own state (ContentState) in step with the window: full screen, the cursor and controls over the
// picture, dropped files, the link editor and the confirmations. Alerts and sheets are window-modal
// and never block the event loop.
class ContentView : public QWidget
{
    Q_OBJECT

public:
    ContentView(PlayerModel &model, LocalM3UActions &localM3U, const PlayerViewServices &services,
                QWidget *parent = nullptr);
    ~ContentView() override;

    ContentState &state() { return *m_state; }
    SidebarView *sidebar() const { return m_sidebar; }
    NetworkPanel *networkPanel() const { return m_network; }
    LocalM3UPanel *localPanel() const { return m_local; }
    PlayerArea *playerArea() const { return m_playerArea; }
    PlayerControlBar *controlBar() const { return m_controlBar; }
    TitleBarHandler *titleBar() const { return m_titleBar; }
    // The alert or sheet open now, if any.
    QWidget *openSheet() const;

    // Files dropped or handed over by the system play as media, the first one now.
    void playFiles(const QList<QUrl> &files);

    void addLocalLink();
    void editLocalLink(const PlaylistEntry &entry);
    void confirmDelete(const PlaylistEntry &entry);
    void confirmClearAll();
    // Clears the search and filters, then imports a file the user chooses in place of the links.
    void importLocalPlaylist();

    // The alerts of a recording's end, for the recorder.
    void showRecordingError(const std::optional<QString> &message, bool permissionMissing);
    void showRecordingSaved(const QString &path);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void openLinkEditor(const std::optional<PlaylistEntry> &editing);
    QMessageBox *openAlert(const QString &title, const QString &message);
    void mouseMovedOver(QObject *window);
    void surfaceClicked(QObject *window);
    void refreshControls();
    void placeChildren();

    PlayerModel &m_model;
    LocalM3UActions &m_localM3U;
    ContentState *m_state;
    ChannelLogoLoader *m_logos;
    NetworkPanel *m_network;
    LocalM3UPanel *m_local;
    QWidget *m_top;
    SidebarView *m_sidebar;
    PlayerArea *m_playerArea;
    PlayerControlBar *m_controlBar;
    QGraphicsOpacityEffect *m_controlsOpacity;
    QPropertyAnimation *m_controlsFade;
    TitleBarHandler *m_titleBar = nullptr;
    QPointer<QWidget> m_sheet;
    QPointer<QWidget> m_watchedWindow;
};
