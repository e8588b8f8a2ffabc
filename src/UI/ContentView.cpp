#include "UI/ContentView.h"

#include "Base/AppNotifier.h"
#include "Base/WebAddress.h"
#include "Player/PlayerModel.h"
#include "UI/AddressField.h"
#include "UI/ChannelLogoLoader.h"
#include "UI/ContentState.h"
#include "UI/FileManagerReveal.h"
#include "UI/LinkEditorDialog.h"
#include "UI/LocalM3UActions.h"
#include "UI/LocalM3UPanel.h"
#include "UI/NetworkPanel.h"
#include "UI/PlayerArea.h"
#include "UI/PlayerControlBar.h"
#include "UI/SidebarView.h"
#include "UI/TitleBarHandler.h"
#include "UI/WindowTexts.h"
#include "UI/WindowTiming.h"

#include <QCursor>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QGraphicsOpacityEffect>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QMimeData>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QWindow>

ContentView::ContentView(PlayerModel &model, LocalM3UActions &localM3U,
                         const PlayerViewServices &services, QWidget *parent)
    : QWidget(parent), m_model(model), m_localM3U(localM3U),
      m_state(new ContentState(model, localM3U, this)), m_logos(new ChannelLogoLoader(this)),
      m_network(new NetworkPanel(model, *m_state, localM3U, *m_logos)),
      m_local(new LocalM3UPanel(model, *m_state, localM3U, *m_logos)), m_top(new QWidget(this)),
      m_sidebar(new SidebarView(*m_state, m_network, m_local, m_top)),
      m_playerArea(new PlayerArea(model, *m_state, services, m_top)),
      m_controlBar(new PlayerControlBar(model, *m_state, this)),
      m_controlsOpacity(new QGraphicsOpacityEffect(m_controlBar)),
      m_controlsFade(new QPropertyAnimation(m_controlsOpacity, "opacity", this))
{
    setObjectName(QStringLiteral("ContentView"));
    setAcceptDrops(true);
    auto *row = new QHBoxLayout(m_top);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(m_sidebar);
    row->addWidget(m_playerArea, 1);
    m_controlsOpacity->setOpacity(1);
    m_controlBar->setGraphicsEffect(m_controlsOpacity);
    m_controlsFade->setDuration(int(WindowTiming::controlsFadeAnimation.count()));
    connect(m_controlsFade, &QPropertyAnimation::finished, this,
            [this] { m_controlBar->setVisible(m_controlsOpacity->opacity() > 0); });
    connect(m_state, &ContentState::isFullScreenChanged, this, [this] {
        refreshControls();
        placeChildren();
    });
    connect(m_state, &ContentState::fullScreenControlsVisibleChanged, this,
            &ContentView::refreshControls);
    // The floating bar follows the picture when the sidebar slides in full screen.
    m_playerArea->installEventFilter(this);
    // A click on the picture takes the keyboard from the text fields, so the player's keys work.
    m_playerArea->setFocusPolicy(Qt::ClickFocus);

    connect(m_network, &NetworkPanel::filesDropped, this, &ContentView::playFiles);
    connect(m_local, &LocalM3UPanel::addRequested, this, &ContentView::addLocalLink);
    connect(m_local, &LocalM3UPanel::editRequested, this, &ContentView::editLocalLink);
    connect(m_local, &LocalM3UPanel::deleteRequested, this, &ContentView::confirmDelete);
    connect(m_local, &LocalM3UPanel::clearRequested, this, &ContentView::confirmClearAll);
    connect(m_local, &LocalM3UPanel::exportRequested, &m_localM3U,
            &LocalM3UActions::exportLocalPlaylistAsM3U);
    connect(m_local, &LocalM3UPanel::importRequested, this, &ContentView::importLocalPlaylist);
    connect(&services.notifier, &AppNotifier::playerMouseMoved, this, &ContentView::mouseMovedOver);
    connect(&services.notifier, &AppNotifier::playerSurfaceClicked, this,
            &ContentView::surfaceClicked);
}

ContentView::~ContentView()
{
    m_playerArea->showCursor();
}

void ContentView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    QWidget *window = this->window();
    if (m_watchedWindow == window)
        return;
    // The window is known only once the view is in it: follow its full-screen state and title.
    if (m_watchedWindow)
        m_watchedWindow->removeEventFilter(this);
    m_watchedWindow = window;
    window->installEventFilter(this);
    // The player's keys, not the address field, have the keyboard when the window opens.
    m_playerArea->setFocus(Qt::OtherFocusReason);
    m_state->setFullScreen(window->isFullScreen());
    delete m_titleBar;
    m_titleBar = new TitleBarHandler(*window, *m_playerArea, m_model, *m_state, this);
}

bool ContentView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_watchedWindow && event->type() == QEvent::WindowStateChange)
        m_state->setFullScreen(m_watchedWindow->isFullScreen());
    else if (watched == m_playerArea && event->type() == QEvent::Resize && m_state->isFullScreen())
        placeChildren();
    return QWidget::eventFilter(watched, event);
}

void ContentView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeChildren();
}

void ContentView::placeChildren()
{
    const int barHeight = m_controlBar->sizeHint().height();
    if (m_state->isFullScreen()) {
        constexpr int margin = 16;
        m_top->setGeometry(rect());
        // Floating over the picture's bottom, clear of the sidebar.
        const QRect picture(m_playerArea->mapTo(this, QPoint()), m_playerArea->size());
        const int barWidth = std::min(picture.width() - 2 * margin, 900);
        m_controlBar->setGeometry(picture.center().x() - barWidth / 2,
                                  picture.bottom() - barHeight - margin, barWidth, barHeight);
        m_playerArea->setBottomInset(barHeight + margin);
    } else {
        m_top->setGeometry(0, 0, width(), std::max(0, height() - barHeight));
        m_controlBar->setGeometry(0, height() - barHeight, width(), barHeight);
        m_playerArea->setBottomInset(0);
    }
    m_controlBar->raise();
}

void ContentView::refreshControls()
{
    // In a window the bar is part of it and always there.
    const bool visible = !m_state->isFullScreen() || m_state->fullScreenControlsVisible();
    m_controlsFade->stop();
    if (visible)
        m_controlBar->show();
    m_controlsFade->setStartValue(m_controlsOpacity->opacity());
    m_controlsFade->setEndValue(visible ? 1.0 : 0.0);
    m_controlsFade->start();
}

void ContentView::mouseMovedOver(QObject *window)
{
    if (!m_watchedWindow || window != m_watchedWindow->windowHandle())
        return;
    m_playerArea->showCursor();
    const QPoint inArea = m_playerArea->mapFromGlobal(QCursor::pos());
    m_state->noteMouseMoved(m_playerArea->rect().contains(inArea));
}

void ContentView::surfaceClicked(QObject *window)
{
    if (m_watchedWindow && window == m_watchedWindow->windowHandle())
        m_state->showFullScreenControls();
}

QWidget *ContentView::openSheet() const
{
    return m_sheet;
}

void ContentView::playFiles(const QList<QUrl> &files)
{
    if (files.isEmpty())
        return;
    // Like a file handed over by the system: played under its file name.
    const WebAddress url = WebAddress::fromLocalFile(files.constFirst().toLocalFile());
    m_model.play(url, url.lastPathComponent(), false);
}

void ContentView::dragEnterEvent(QDragEnterEvent *event)
{
    if (!AddressField::droppedFiles(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void ContentView::dropEvent(QDropEvent *event)
{
    const QList<QUrl> files = AddressField::droppedFiles(event->mimeData());
    if (files.isEmpty())
        return;
    event->acceptProposedAction();
    // After the drop has returned to the system that started it.
    QMetaObject::invokeMethod(
        this, [this, files] { playFiles(files); }, Qt::QueuedConnection);
}

void ContentView::addLocalLink()
{
    openLinkEditor(std::nullopt);
}

void ContentView::editLocalLink(const PlaylistEntry &entry)
{
    openLinkEditor(entry);
}

void ContentView::openLinkEditor(const std::optional<PlaylistEntry> &editing)
{
    auto *editor = new LinkEditorDialog(editing, this);
    editor->setAttribute(Qt::WA_DeleteOnClose);
    const std::optional<QUuid> id = editing ? std::optional(editing->id) : std::nullopt;
    connect(editor, &LinkEditorDialog::saved, this, [this, id](const LocalLinkFields &fields) {
        if (id)
            m_localM3U.editLink(*id, fields);
        else
            m_localM3U.addLink(fields);
    });
    m_sheet = editor;
    editor->open();
}

QMessageBox *ContentView::openAlert(const QString &title, const QString &message)
{
    auto *alert = new QMessageBox(QMessageBox::Warning, title, title, QMessageBox::NoButton, this);
    alert->setObjectName(QStringLiteral("alert"));
    alert->setInformativeText(message);
    alert->setAttribute(Qt::WA_DeleteOnClose);
    alert->setWindowModality(Qt::WindowModal);
    m_sheet = alert;
    return alert;
}

void ContentView::confirmDelete(const PlaylistEntry &entry)
{
    QMessageBox *alert =
        openAlert(WindowTexts::deleteTitle(entry.name), WindowTexts::deleteMessage(entry.name));
    alert->addButton(WindowTexts::cancel.toString(), QMessageBox::RejectRole);
    QPushButton *remove =
        alert->addButton(WindowTexts::deleteButton.toString(), QMessageBox::DestructiveRole);
    const QUuid id = entry.id;
    connect(remove, &QPushButton::clicked, this, [this, id] { m_localM3U.deleteLink(id); });
    alert->open();
}

void ContentView::confirmClearAll()
{
    QMessageBox *alert =
        openAlert(WindowTexts::clearAllTitle.toString(), WindowTexts::clearAllMessage.toString());
    alert->addButton(WindowTexts::cancel.toString(), QMessageBox::RejectRole);
    QPushButton *remove =
        alert->addButton(WindowTexts::deletePermanently.toString(), QMessageBox::DestructiveRole);
    connect(remove, &QPushButton::clicked, &m_localM3U, &LocalM3UActions::deleteAll);
    alert->open();
}

void ContentView::importLocalPlaylist()
{
    m_state->clearFilters();
    m_localM3U.importLocalPlaylist(std::nullopt);
}

void ContentView::showRecordingError(const std::optional<QString> &message, bool permissionMissing)
{
    QMessageBox *alert = openAlert(WindowTexts::recordingErrorTitle.toString(),
                                   message.value_or(WindowTexts::recordingErrorUnknown.toString()));
    // Escape, closing the alert or quitting the application answer OK.
    alert->setEscapeButton(alert->addButton(QMessageBox::Ok));
    if (permissionMissing) {
        QPushButton *settings =
            alert->addButton(WindowTexts::openSystemSettings.toString(), QMessageBox::ActionRole);
        connect(settings, &QPushButton::clicked, this, [] {
            QDesktopServices::openUrl(QUrl(WindowTexts::screenCaptureSettingsURL.toString()));
        });
    }
    alert->open();
}

void ContentView::showRecordingSaved(const QString &path)
{
    QMessageBox *alert = openAlert(WindowTexts::recordingSavedTitle.toString(),
                                   WindowTexts::recordingSavedMessage.toString());
    alert->setIcon(QMessageBox::Information);
    alert->setEscapeButton(alert->addButton(QMessageBox::Ok));
    QPushButton *reveal =
        alert->addButton(WindowTexts::showInFileManager.toString(), QMessageBox::ActionRole);
    connect(reveal, &QPushButton::clicked, this, [path] { FileManagerReveal::reveal(path); });
    alert->open();
}
