#include "App/WindowScreenshot.h"

#include "App/AppSession.h"
#include "Recording/WidgetsAbove.h"
#include "Surface/PlayerHostingView.h"
#include "Surface/PlayerSurface.h"
#include "UI/ContentView.h"
#include "UI/PlayerArea.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QImageWriter>
#include <QPainter>
#include <QPixmap>
#include <QWidget>

#include <cstdio>

namespace {
// What is shown is given a moment to be painted after it arrived.
constexpr std::chrono::milliseconds paintAllowance{300};

// The video is drawn in a native window of its own, which a picture of the widgets leaves out:
// it is put in, and the widgets over it are drawn over it again.
void addVideo(QWidget &window, QImage &shot)
{
    auto *view = window.findChild<PlayerHostingView *>();
    if (!view || !view->isVisible())
        return;
    const QImage video = view->grabFramebuffer();
    if (video.isNull())
        return;
    QPainter painter(&shot);
    const QPoint at = view->mapTo(&window, QPoint(0, 0));
    painter.drawImage(QRect(at, view->size()), video);
    for (const WidgetsAbove::Placed &placed : WidgetsAbove::over(*view))
        painter.drawImage(QRect(at + placed.covered.topLeft(), placed.covered.size()),
                          WidgetsAbove::picture(*view, placed, shot.devicePixelRatio()));
}
} // namespace

WindowScreenshot::WindowScreenshot(AppSession &session, const QString &path,
                                   std::optional<double> after, bool opensSomething,
                                   QObject *parent)
    : QObject(parent), m_session(session), m_path(path)
{
    m_deadline.setSingleShot(true);
    connect(&m_deadline, &QTimer::timeout, this, &WindowScreenshot::take);
    if (after) {
        m_deadline.start(std::chrono::milliseconds(qRound64(*after * 1000)));
        return;
    }
    if (!opensSomething) {
        m_deadline.start(paintAllowance);
        return;
    }
    m_deadline.start(longestWait);
    PlayerModel &model = session.player();
    connect(session.content().playerArea()->surface(), &PlayerSurface::frameShown, this,
            &WindowScreenshot::contentShown);
    connect(&model, &PlayerModel::playlistChanged, this, [this, &model] {
        if (!model.playlist().isEmpty())
            contentShown();
    });
    connect(&model, &PlayerModel::errorMessageChanged, this, [this, &model] {
        if (model.errorMessage())
            contentShown();
    });
}

void WindowScreenshot::contentShown()
{
    if (m_taking)
        return;
    m_taking = true;
    m_deadline.start(paintAllowance);
}

std::optional<QString> WindowScreenshot::save(QWidget &window, const QString &path)
{
    const QByteArray format = QFileInfo(path).suffix().toLower().toLatin1();
    if (format.isEmpty() || !QImageWriter::supportedImageFormats().contains(format))
        return QStringLiteral("no picture format is named by the file name's ending: ") + path;
    QImage shot = window.grab().toImage();
    addVideo(window, shot);
    QImageWriter writer(path, format);
    if (!writer.write(shot))
        return writer.errorString();
    return std::nullopt;
}

void WindowScreenshot::take()
{
    m_taking = true;
    if (const std::optional<QString> failure = save(m_session.window(), m_path)) {
        std::fprintf(stderr, "velmplayerpro: cannot write the screenshot to %s: %s\n",
                     qPrintable(m_path), qPrintable(*failure));
        QCoreApplication::exit(1);
        return;
    }
    QCoreApplication::exit(0);
}
