#include "Surface/PlayerHostingView.h"

#include "Base/AppNotifier.h"
#include "Base/ThreadCpuTime.h"
#include "Player/MpvEngine.h"
#include "Recording/WidgetsAbove.h"
#include "Surface/FaceSearch.h"
#include "Surface/PlayerLayerGeometry.h"
#include "Surface/PlayerVideoWindow.h"
#include "Surface/SmartReframe.h"

#include <QFutureWatcher>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QOpenGLBuffer>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLShaderProgram>
#include <QTimer>
#include <QWindow>

#include <mpv/render_gl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace {

// Frames are kept where they can be read back while they are asked for at least this often.
constexpr qint64 keepFramesForMs = 1000;

// The face network takes pictures 256 pixels across.
constexpr int analysisSide = 256;

const char *const vertexShader = "attribute vec2 position;\n"
                                 "attribute vec2 textureCoordinate;\n"
                                 "varying vec2 coordinate;\n"
                                 "void main() {\n"
                                 "    coordinate = textureCoordinate;\n"
                                 "    gl_Position = vec4(position, 0.0, 1.0);\n"
                                 "}\n";

const char *const fragmentShader = "#ifdef GL_ES\n"
                                   "precision mediump float;\n"
                                   "#endif\n"
                                   "varying vec2 coordinate;\n"
                                   "uniform sampler2D picture;\n"
                                   "void main() {\n"
                                   "    gl_FragColor = texture2D(picture, coordinate);\n"
                                   "}\n";

void *procAddress(void *, const char *name)
{
    QOpenGLContext *context = QOpenGLContext::currentContext();
    return context ? reinterpret_cast<void *>(context->getProcAddress(QByteArray(name))) : nullptr;
}

// The picture's own aspect, 0 while unknown.
double pictureAspect(const MpvEngine *player)
{
    if (!player)
        return 0;
    const QSize size = player->videoSize();
    return size.width() > 0 && size.height() > 0 ? double(size.width()) / size.height() : 0;
}

} // namespace

PlayerHostingView::PlayerHostingView(AppNotifier &notifier, QWidget *parent)
    : QWidget(parent), m_notifier(notifier)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAutoFillBackground(true);
    QPalette black = palette();
    black.setColor(QPalette::Window, Qt::black);
    setPalette(black);
    setMouseTracking(false);
    makeWindow();
}

PlayerHostingView::~PlayerHostingView()
{
    m_closing = true;
    freeRenderContext();
    m_smartTimer.reset();
    delete m_container;
}

void PlayerHostingView::makeWindow()
{
    m_window = new PlayerVideoWindow([this] { initializeVideo(); }, [this] { paintVideo(); },
                                     [this] { windowLeaving(); });
    m_container = QWidget::createWindowContainer(m_window, this);
    // The window takes no input; the view under it takes the presses, and drops go to the
    // widgets that take them, as if the window were not there.
    m_container->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_container->setAcceptDrops(false);
    m_container->setFocusPolicy(Qt::NoFocus);
    m_container->setGeometry(rect());
    connect(m_window, &QOpenGLWindow::frameSwapped, this, [this] {
        // mpv times its frames by when they reach the screen.
        if (m_render)
            mpv_render_context_report_swap(m_render);
        Q_EMIT frameSwapped();
    });
}

void PlayerHostingView::windowLeaving()
{
    if (QOpenGLContext *gl = m_window ? m_window->context() : nullptr)
        disconnect(gl, nullptr, this, nullptr);
    releaseWindowBuffers();
    freeRenderContext();
    if (!m_closing)
        QTimer::singleShot(0, this, &PlayerHostingView::replaceLostWindow);
}

void PlayerHostingView::replaceLostWindow()
{
    if (m_window) {
        // Only its native window went; a new one comes with the next showing, and with the next
        // frame the render context.
        m_window->update();
        return;
    }
    delete m_container;
    makeWindow();
    m_container->setVisible(isVisible());
}

void PlayerHostingView::relayout()
{
    if (m_window)
        m_window->update();
}

void PlayerHostingView::showEvent(QShowEvent *)
{
    watchWindow();
    refreshOverlays();
}

void PlayerHostingView::watchWindow()
{
    QWidget *top = window();
    if (top == m_watchedWindow)
        return;
    if (m_watchedWindow)
        m_watchedWindow->removeEventFilter(this);
    m_watchedWindow = top;
    top->installEventFilter(this);
}

bool PlayerHostingView::eventFilter(QObject *watched, QEvent *event)
{
    // The window's widgets are about to be painted: whatever changed over the picture is in
    // their state already.
    if (watched == m_watchedWindow && event->type() == QEvent::UpdateRequest)
        refreshOverlays();
    return QWidget::eventFilter(watched, event);
}

void PlayerHostingView::refreshOverlays()
{
    if (!isVisible())
        return;
    const double scale = devicePixelRatioF();
    const std::vector<WidgetsAbove::Placed> placed = WidgetsAbove::over(*this);
    // Painted over the pictures that the last change replaced: this comes with every repaint of
    // the window, and fresh memory for the pictures would fault in a page at a time each time.
    m_spareOverlays.resize(placed.size());
    for (size_t i = 0; i < placed.size(); ++i) {
        m_spareOverlays[i].covered = placed[i].covered;
        WidgetsAbove::paint(*this, placed[i], scale, m_spareOverlays[i].image);
    }
    const auto same = [](const Overlay &a, const Overlay &b) {
        return a.covered == b.covered && a.image == b.image;
    };
    if (std::equal(m_spareOverlays.begin(), m_spareOverlays.end(), m_overlays.begin(),
                   m_overlays.end(), same))
        return;
    std::swap(m_overlays, m_spareOverlays);
    m_overlaysChanged = true;
    relayout();
}

void PlayerHostingView::drawOverlays(QSize pixels)
{
    if (m_overlays.empty())
        return;
    glBindFramebuffer(GL_FRAMEBUFFER, m_window->defaultFramebufferObject());
    glViewport(0, 0, pixels.width(), pixels.height());
    glDisable(GL_SCISSOR_TEST);
    if (m_overlayTextures.size() < m_overlays.size()) {
        const size_t had = m_overlayTextures.size();
        m_overlayTextures.resize(m_overlays.size());
        glGenTextures(GLsizei(m_overlays.size() - had), m_overlayTextures.data() + had);
        m_overlaysChanged = true;
    }
    if (m_overlaysChanged) {
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
        for (size_t i = 0; i < m_overlays.size(); ++i) {
            const QImage image =
                m_overlays[i].image.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
            glBindTexture(GL_TEXTURE_2D, m_overlayTextures[i]);
            glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, image.width(), image.height(), 0, GL_RGBA,
                         GL_UNSIGNED_BYTE, image.constBits());
        }
        glBindTexture(GL_TEXTURE_2D, 0);
        m_overlaysChanged = false;
    }
    // The pictures of the widgets are premultiplied, as Qt paints them.
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    for (size_t i = 0; i < m_overlays.size(); ++i) {
        const QRectF r = m_overlays[i].covered;
        drawTexture(m_overlayTextures[i],
                    quadVertices({r.topLeft(), r.topRight(), r.bottomRight(), r.bottomLeft()}));
    }
    glDisable(GL_BLEND);
}

void PlayerHostingView::releaseWindowBuffers()
{
    if (!m_window || !m_window->isValid())
        return;
    m_window->makeCurrent();
    if (!m_overlayTextures.empty())
        glDeleteTextures(GLsizei(m_overlayTextures.size()), m_overlayTextures.data());
    m_overlayTextures.clear();
    m_overlaysChanged = true;
    m_shown.reset();
    m_frame.reset();
    m_frameHoldsPicture = false;
    m_window->doneCurrent();
}

void PlayerHostingView::resizeEvent(QResizeEvent *)
{
    if (m_container)
        m_container->setGeometry(rect());
}

void PlayerHostingView::setPlayer(MpvEngine *player)
{
    if (m_player == player)
        return;
    freeRenderContext();
    if (m_player)
        disconnect(m_player, nullptr, this, nullptr);
    m_player = player;
    if (!player)
        return;
    // The manual and smart framings depend on the picture's shape.
    connect(player, &MpvEngine::videoSizeChanged, this, &PlayerHostingView::relayout);
    connect(player, &MpvEngine::aboutToShutDown, this, &PlayerHostingView::freeRenderContext);
    connect(player, &MpvEngine::loadRequested, this, &PlayerHostingView::forgetShownFrames);
    forgetShownFrames();
    if (m_window && m_window->isValid()) {
        m_window->makeCurrent();
        createRenderContext();
        m_window->doneCurrent();
    }
}

void PlayerHostingView::setDisplayMode(PortraitDisplayMode mode)
{
    if (mode != m_displayMode) {
        m_displayMode = mode;
        if (mode == PortraitDisplayMode::fill || mode == PortraitDisplayMode::rotate)
            setHorizontalPan(0);
        updateSmartTimer();
    }
    relayout();
}

void PlayerHostingView::updateSmartTimer()
{
    ++m_smartGeneration;
    m_smartTimer.reset();
    if (m_displayMode != PortraitDisplayMode::smart)
        return;
    // Owned by this view and connected to it: a view that goes away takes its steps with it.
    m_smartTimer = std::make_unique<QTimer>();
    m_smartTimer->setInterval(SmartReframe::stepInterval);
    connect(m_smartTimer.get(), &QTimer::timeout, this, &PlayerHostingView::trackLargestFace);
    m_smartTimer->start();
}

void PlayerHostingView::trackLargestFace()
{
    // A step queued before the mode changed does nothing.
    if (m_displayMode != PortraitDisplayMode::smart || !m_player)
        return;
    // A paused video shows no new frame: nothing is searched and the pan stays.
    if (!m_shownFrameTime || m_shownFrameTime == m_searchedFrameTime)
        return;
    // The step before is still under way: this one is skipped, not queued.
    if (m_stepUnderWay)
        return;
    const double startCpu = threadCpuMs();
    m_searchedFrameTime = m_shownFrameTime;
    m_stepUnderWay = true;
    if (!m_faceSearch)
        m_faceSearch = std::make_unique<FaceSearch>();
    // The engine hands over the whole decoded frame, scaled down on its own thread, and the search
    // takes it from there: the view draws only the box, and the search must see the faces outside.
    const QFuture<FaceSearchResult> step =
        m_faceSearch->search(m_player->grabVideoFrame(analysisSide));
    auto *watcher = new QFutureWatcher<FaceSearchResult>(this);
    connect(watcher, &QFutureWatcherBase::finished, this,
            [this, watcher, generation = m_smartGeneration] {
                const double endCpu = threadCpuMs();
                watcher->deleteLater();
                m_stepUnderWay = false;
                // A step whose picture never came (the engine went away meanwhile) ends empty.
                const QFuture<FaceSearchResult> future = watcher->future();
                const FaceSearchResult result =
                    future.resultCount() > 0 ? future.result() : FaceSearchResult{};
                faceSearchEnded(result.faces, generation);
                Q_EMIT faceSearchMeasured(m_stepStartCpuMs + threadCpuMs() - endCpu, result.cpuMs);
            });
    watcher->setFuture(step);
    m_stepStartCpuMs = threadCpuMs() - startCpu;
}

void PlayerHostingView::faceSearchEnded(const std::optional<std::vector<FaceBox>> &faces,
                                        quint64 generation)
{
    // The mode changed or a new load began meanwhile, or there was no frame: nothing moves.
    if (generation != m_smartGeneration || m_displayMode != PortraitDisplayMode::smart || !faces)
        return;
    const double target = SmartReframe::panTarget(SmartReframe::largestFace(*faces));
    // While the video plays, its next frame is drawn with the new pan within a frame's time; a
    // repaint of its own would present the same frame once more, for nothing the eye could tell.
    const bool playing = m_player && m_player->isPlaying();
    storeHorizontalPan(SmartReframe::nextPan(m_horizontalPan, target), !playing);
}

void PlayerHostingView::forgetShownFrames()
{
    m_frameHoldsPicture = false;
    ++m_smartGeneration;
    m_shownFrameTime.reset();
    m_searchedFrameTime.reset();
}

void PlayerHostingView::setFillScreen(bool fillScreen)
{
    if (fillScreen == m_fillScreen)
        return;
    m_fillScreen = fillScreen;
    relayout();
}

void PlayerHostingView::setHorizontalPan(double pan)
{
    storeHorizontalPan(pan, true);
}

void PlayerHostingView::storeHorizontalPan(double pan, bool repaint)
{
    pan = std::clamp(pan, -1.0, 1.0);
    if (pan == m_horizontalPan)
        return;
    m_horizontalPan = pan;
    if (repaint)
        relayout();
    Q_EMIT horizontalPanChanged();
}

PlayerLayerLayout PlayerHostingView::currentLayout() const
{
    const QSize picture = m_player ? m_player->videoSize() : QSize();
    return PlayerLayerGeometry::layout(m_displayMode, QSizeF(size()), QSizeF(picture),
                                       m_horizontalPan);
}

QRect PlayerHostingView::recordingRectInView() const
{
    if (m_displayMode == PortraitDisplayMode::normal)
        return rect();
    return currentLayout().cropRect.toRect();
}

bool PlayerHostingView::keepsShownFrames() const
{
    return m_sinceAsked.isValid() && m_sinceAsked.elapsed() < keepFramesForMs;
}

CapturedPicture PlayerHostingView::recordingPicture(const QRect &rect)
{
    if (m_framesDrawn == 0)
        return {};
    const bool kept = keepsShownFrames() && m_shown;
    m_sinceAsked.start();
    // Frames were not being kept: this one is drawn again, into the buffer kept from now.
    if (!kept && !paintShownFrame())
        return {};
    return readShownFrame(rect);
}

bool PlayerHostingView::paintShownFrame()
{
    if (!m_window || !m_window->isValid())
        return false;
    m_window->makeCurrent();
    paintVideo();
    m_window->doneCurrent();
    return m_shown != nullptr;
}

CapturedPicture PlayerHostingView::readShownFrame(const QRect &rect)
{
    const double dpr = devicePixelRatioF();
    // The kept frame has the size the view had when it was drawn.
    const QSize buffer = m_shown->size();
    const QRect pixels =
        QRect(QPoint(int(std::floor(rect.left() * dpr)), int(std::floor(rect.top() * dpr))),
              QSize(int(std::lround(rect.width() * dpr)), int(std::lround(rect.height() * dpr))))
            .intersected(QRect(QPoint(0, 0), buffer));
    if (pixels.isEmpty())
        return {};
    QImage image(pixels.size(), QImage::Format_RGBA8888);
    m_window->makeCurrent();
    glBindFramebuffer(GL_FRAMEBUFFER, m_shown->handle());
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    // OpenGL counts rows from the bottom; the rows arrive bottom first and stay so.
    glReadPixels(pixels.left(), buffer.height() - pixels.bottom() - 1, pixels.width(),
                 pixels.height(), GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    m_window->doneCurrent();
    return {std::move(image), true};
}

QImage PlayerHostingView::grabFramebuffer()
{
    // Marked as asked for before drawing, so that the frame lands in the kept buffer.
    m_sinceAsked.start();
    if (!paintShownFrame())
        return {};
    CapturedPicture picture = readShownFrame(rect());
    return picture.bottomUp ? picture.image.mirrored() : picture.image;
}

void PlayerHostingView::initializeVideo()
{
    initializeOpenGLFunctions();
    m_program = std::make_unique<QOpenGLShaderProgram>();
    m_program->addShaderFromSourceCode(QOpenGLShader::Vertex, vertexShader);
    m_program->addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentShader);
    m_program->bindAttributeLocation("position", 0);
    m_program->bindAttributeLocation("textureCoordinate", 1);
    m_program->link();
    m_vertices = std::make_unique<QOpenGLBuffer>(QOpenGLBuffer::VertexBuffer);
    m_vertices->create();
    m_vertices->setUsagePattern(QOpenGLBuffer::StreamDraw);
    // A new window comes with a new context: everything made in the old one goes
    // with it, and is made again here.
    connect(m_window->context(), &QOpenGLContext::aboutToBeDestroyed, this,
            &PlayerHostingView::freeRenderContext, Qt::DirectConnection);
    if (m_player)
        createRenderContext();
}

void PlayerHostingView::createRenderContext()
{
    if (m_render || !m_player || !m_player->isValid())
        return;
    mpv_opengl_init_params glInit{procAddress, nullptr};
    const char *api = MPV_RENDER_API_TYPE_OPENGL;
    std::vector<mpv_render_param> parameters{{MPV_RENDER_PARAM_API_TYPE, const_cast<char *>(api)},
                                             {MPV_RENDER_PARAM_OPENGL_INIT_PARAMS, &glInit}};
#if QT_CONFIG(xcb)
    // Hardware decoding hands frames over through the X display.
    if (auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>())
        parameters.push_back({MPV_RENDER_PARAM_X11_DISPLAY, x11->display()});
#endif
    parameters.push_back({MPV_RENDER_PARAM_INVALID, nullptr});
    if (m_player->createRenderContext(&m_render, parameters.data()) < 0) {
        m_render = nullptr;
        return;
    }
    // Called on mpv's threads: only ask the main thread to draw.
    mpv_render_context_set_update_callback(
        m_render,
        [](void *view) {
            QMetaObject::invokeMethod(static_cast<PlayerHostingView *>(view),
                                      &PlayerHostingView::frameReady, Qt::QueuedConnection);
        },
        this);
}

void PlayerHostingView::freeRenderContext()
{
    if (!m_render)
        return;
    // The render context goes with the OpenGL context it was made in, current.
    m_window->makeCurrent();
    mpv_render_context_set_update_callback(m_render, nullptr, nullptr);
    mpv_render_context_free(m_render);
    m_render = nullptr;
    m_frame.reset();
    m_shown.reset();
    m_frameHoldsPicture = false;
    m_window->doneCurrent();
    if (m_player)
        m_player->renderContextFreed();
}

void PlayerHostingView::frameReady()
{
    // mpv also calls for changes that need no new picture; only a frame is worth a repaint.
    if (!m_render || !(mpv_render_context_update(m_render) & MPV_RENDER_UPDATE_FRAME))
        return;
    m_hasNewFrame = true;
    // Hidden, the window is not repainted, yet mpv waits for its frames to be taken: draw them
    // anyway so that playback, and its sound, go on.
    if (!m_window)
        return;
    if (m_window->isExposed() && !(window()->windowState() & Qt::WindowMinimized)) {
        m_window->update();
        return;
    }
    m_window->makeCurrent();
    paintVideo();
    m_window->doneCurrent();
}

bool PlayerHostingView::chooseTarget(QSize pixels)
{
    m_target = m_window->defaultFramebufferObject();
    if (!keepsShownFrames()) {
        m_shown.reset();
        return false;
    }
    if (!m_shown || m_shown->size() != pixels) {
        m_shown = std::make_unique<QOpenGLFramebufferObject>(pixels);
        if (!m_shown->isValid()) {
            m_shown.reset();
            return false;
        }
    }
    m_target = m_shown->handle();
    return true;
}

void PlayerHostingView::paintVideo()
{
    // A native window made anew after its render context went needs one again.
    if (!m_render)
        createRenderContext();
    const QSize pixels = size() * devicePixelRatioF();
    const bool keeps = chooseTarget(pixels);
    glBindFramebuffer(GL_FRAMEBUFFER, m_target);
    glViewport(0, 0, pixels.width(), pixels.height());
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    ++m_framesDrawn;
    if (m_render) {
        if (m_displayMode == PortraitDisplayMode::normal)
            renderDirect(pixels);
        else
            renderFramed(currentLayout(), pixels);
    }
    if (keeps) {
        const QRect whole(QPoint(0, 0), pixels);
        QOpenGLFramebufferObject::blitFramebuffer(nullptr, whole, m_shown.get(), whole);
    }
    drawOverlays(pixels);
    if (m_render && m_hasNewFrame) {
        m_hasNewFrame = false;
        if (const double time = m_player ? m_player->position() : NAN; std::isfinite(time))
            m_shownFrameTime = time;
        Q_EMIT frameShown();
    }
}

void PlayerHostingView::renderDirect(QSize pixels)
{
    m_frameHoldsPicture = false;
    if (m_player)
        m_player->setVideoPlacement({});
    // Whole and letterboxed is mpv's own layout: it draws straight into the target.
    mpv_opengl_fbo target{int(m_target), pixels.width(), pixels.height(), 0};
    int flip = 1;
    mpv_render_param parameters[] = {{MPV_RENDER_PARAM_OPENGL_FBO, &target},
                                     {MPV_RENDER_PARAM_FLIP_Y, &flip},
                                     {MPV_RENDER_PARAM_INVALID, nullptr}};
    mpv_render_context_render(m_render, parameters);
}

void PlayerHostingView::renderFramed(const PlayerLayerLayout &layout, QSize pixels)
{
    const double aspect = pictureAspect(m_player);
    const auto corners = PlayerLayerGeometry::pictureCorners(layout, aspect);
    if (drawsOnlyTheBox(aspect)) {
        renderBox(layout, corners, pixels);
        return;
    }
    // mpv draws the picture upright into a buffer of its own shape, as large as it shows on
    // screen but never beyond its own resolution; the buffer is then placed, cut and turned.
    const double dpr = devicePixelRatioF();
    QSizeF shown(std::hypot(corners[1].x() - corners[0].x(), corners[1].y() - corners[0].y()),
                 std::hypot(corners[3].x() - corners[0].x(), corners[3].y() - corners[0].y()));
    shown *= dpr;
    const QSize native = m_player ? m_player->videoSize() : QSize();
    if (native.width() > 0 && shown.width() > native.width())
        shown = QSizeF(native);
    const QSize bufferSize(std::clamp(int(std::lround(shown.width())), 1, 8192),
                           std::clamp(int(std::lround(shown.height())), 1, 8192));
    if (renderIntoFrame(bufferSize, {}))
        drawPicture(layout, corners, pixels);
}

bool PlayerHostingView::drawsOnlyTheBox(double aspect) const
{
    // The turned picture of rotate fills its box anyway.
    return m_displayMode != PortraitDisplayMode::normal &&
           m_displayMode != PortraitDisplayMode::rotate && aspect > 0;
}

void PlayerHostingView::renderBox(const PlayerLayerLayout &layout,
                                  const std::array<QPointF, 4> &corners, QSize pixels)
{
    // The box shows about a quarter of the zoomed picture. Drawing the rest, only to cut it
    // away, cost a software renderer dropped frames at 1080p60.
    const double dpr = devicePixelRatioF();
    const QRectF box = layout.cropRect;
    const QSize target(std::clamp(int(std::lround(box.width() * dpr)), 1, 8192),
                       std::clamp(int(std::lround(box.height() * dpr)), 1, 8192));
    const QRectF picture = QRectF(corners[0], corners[2]).translated(-box.topLeft());
    const QRectF wanted(picture.topLeft() * dpr, picture.size() * dpr);
    const QSize display = m_player->videoSize();
    const VideoPlacement placement =
        PlayerLayerGeometry::placementInTarget(target, wanted, display);
    if (!renderIntoFrame(target, placement))
        return;
    // mpv cuts the picture at whole source pixels, so it lands up to a pixel off: the buffer is
    // stretched back so that the picture falls exactly where the layout puts it.
    const QRectF drawn = PlayerLayerGeometry::drawnPicture(target, placement, display);
    const auto inView = [&](double x, double y) {
        return box.topLeft() +
               QPointF(wanted.left() + (x - drawn.left()) * wanted.width() / drawn.width(),
                       wanted.top() + (y - drawn.top()) * wanted.height() / drawn.height()) /
                   dpr;
    };
    const double w = target.width();
    const double h = target.height();
    drawPicture(layout, {inView(0, 0), inView(w, 0), inView(w, h), inView(0, h)}, pixels);
}

bool PlayerHostingView::renderIntoFrame(QSize size, const VideoPlacement &placement)
{
    if (!prepareFrameBuffer(size))
        return false;
    if (m_player)
        m_player->setVideoPlacement(placement);
    // A pan or a change of mode between two frames only places the picture anew when the
    // buffer already holds what is needed: mpv draws a frame again only when it is new, or the
    // buffer or what it must hold changed. Redrawing it at every step of a pan cost a whole
    // scaled frame each time, several percent of the CPU in the smart mode. A new placement
    // reaches mpv's renderer a moment later, and mpv then sends the frame again.
    if (m_hasNewFrame || !m_frameHoldsPicture || placement != m_framePlacement || !m_player ||
        !m_player->hasMedia()) {
        mpv_opengl_fbo target{int(m_frame->handle()), size.width(), size.height(), 0};
        int flip = 0;
        mpv_render_param parameters[] = {{MPV_RENDER_PARAM_OPENGL_FBO, &target},
                                         {MPV_RENDER_PARAM_FLIP_Y, &flip},
                                         {MPV_RENDER_PARAM_INVALID, nullptr}};
        mpv_render_context_render(m_render, parameters);
        m_frameHoldsPicture = true;
        m_framePlacement = placement;
    }
    return true;
}

bool PlayerHostingView::prepareFrameBuffer(QSize size)
{
    if (!m_frame || m_frame->size() != size) {
        m_frameHoldsPicture = false;
        m_frame = std::make_unique<QOpenGLFramebufferObject>(size);
        if (!m_frame->isValid()) {
            m_frame.reset();
            return false;
        }
    }
    return true;
}

void PlayerHostingView::drawPicture(const PlayerLayerLayout &layout,
                                    const std::array<QPointF, 4> &corners, QSize pixels)
{
    // mpv leaves the framebuffer, viewport, scissor and blending as it needed them.
    glBindFramebuffer(GL_FRAMEBUFFER, m_target);
    glViewport(0, 0, pixels.width(), pixels.height());
    glDisable(GL_BLEND);
    glClearColor(0, 0, 0, 1);
    glDisable(GL_SCISSOR_TEST);
    glClear(GL_COLOR_BUFFER_BIT);
    const double dpr = devicePixelRatioF();
    if (layout.clipsToCrop) {
        const QRectF crop = layout.cropRect;
        const int left = int(std::floor(crop.left() * dpr));
        const int right = int(std::ceil(crop.right() * dpr));
        const int bottom = pixels.height() - int(std::ceil(crop.bottom() * dpr));
        const int top = pixels.height() - int(std::floor(crop.top() * dpr));
        glEnable(GL_SCISSOR_TEST);
        glScissor(left, bottom, std::max(0, right - left), std::max(0, top - bottom));
    }

    // mpv drew into the buffer without flipping, so its first row, texture row 0, is the
    // picture's top: the picture's top-left corner is the texture's (0, 0).
    drawTexture(m_frame->texture(), quadVertices(corners));
    glDisable(GL_SCISSOR_TEST);
}

std::array<float, 16> PlayerHostingView::quadVertices(const std::array<QPointF, 4> &corners) const
{
    constexpr std::array<std::array<float, 2>, 4> texture{{{0, 0}, {1, 0}, {1, 1}, {0, 1}}};
    const double w = width();
    const double h = height();
    std::array<float, 16> vertices{};
    for (size_t i = 0; i < 4; ++i) {
        vertices[i * 4] = float(2 * corners[i].x() / w - 1);
        vertices[i * 4 + 1] = float(1 - 2 * corners[i].y() / h);
        vertices[i * 4 + 2] = texture[i][0];
        vertices[i * 4 + 3] = texture[i][1];
    }
    return vertices;
}

void PlayerHostingView::mousePressEvent(QMouseEvent *event)
{
    Q_EMIT m_notifier.playerSurfaceClicked(window()->windowHandle());
    if (event->button() != Qt::LeftButton)
        return;
    if (m_displayMode == PortraitDisplayMode::manual)
        m_panDrag = PanDrag{event->scenePosition().x(), m_horizontalPan};
    else
        startWindowDrag(event);
}

void PlayerHostingView::drawTexture(GLuint texture, const std::array<float, 16> &vertices)
{
    m_program->bind();
    m_vertices->bind();
    m_vertices->allocate(vertices.data(), int(sizeof vertices));
    m_program->enableAttributeArray(0);
    m_program->enableAttributeArray(1);
    m_program->setAttributeBuffer(0, GL_FLOAT, 0, 2, 4 * sizeof(float));
    m_program->setAttributeBuffer(1, GL_FLOAT, 2 * sizeof(float), 2, 4 * sizeof(float));
    m_program->setUniformValue("picture", 0);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glDrawArrays(GL_TRIANGLE_FAN, 0, 4);
    glBindTexture(GL_TEXTURE_2D, 0);
    m_program->disableAttributeArray(0);
    m_program->disableAttributeArray(1);
    m_vertices->release();
    m_program->release();
}

void PlayerHostingView::startWindowDrag(QMouseEvent *event)
{
    QWidget *top = window();
    if (top->isFullScreen())
        return;
    // The window system moves the window where it can; elsewhere the drag moves it here.
    if (QWindow *handle = top->windowHandle(); handle && handle->startSystemMove())
        return;
    m_windowDrag = WindowDrag{event->globalPosition().toPoint(), top->pos()};
}

void PlayerHostingView::mouseDoubleClickEvent(QMouseEvent *event)
{
    m_panDrag.reset();
    m_windowDrag.reset();
    if (event->button() != Qt::LeftButton)
        return;
    QWidget *top = window();
    top->setWindowState(top->windowState() ^ Qt::WindowFullScreen);
}

void PlayerHostingView::mouseMoveEvent(QMouseEvent *event)
{
    if (!(event->buttons() & Qt::LeftButton)) {
        m_panDrag.reset();
        m_windowDrag.reset();
        return;
    }
    if (m_panDrag) {
        setHorizontalPan(PlayerLayerGeometry::pannedBy(
            m_panDrag->startPan, event->scenePosition().x() - m_panDrag->startX, width()));
    } else if (m_windowDrag) {
        window()->move(m_windowDrag->startWindow + event->globalPosition().toPoint() -
                       m_windowDrag->startGlobal);
    }
}

void PlayerHostingView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        m_panDrag.reset();
        m_windowDrag.reset();
    }
}
