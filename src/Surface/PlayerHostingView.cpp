#include "Surface/PlayerHostingView.h"

#include "Base/AppNotifier.h"
#include "Base/ThreadCpuTime.h"
#include "Player/MpvEngine.h"
#include "Surface/FaceSearch.h"
#include "Surface/PlayerLayerGeometry.h"
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
    : QOpenGLWidget(parent), m_notifier(notifier)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(false);
}

PlayerHostingView::~PlayerHostingView()
{
    // The base class destroys the OpenGL context after this destructor has run: its
    // aboutToBeDestroyed must no longer reach this object, whose part is gone by then.
    if (QOpenGLContext *gl = context())
        disconnect(gl, nullptr, this, nullptr);
    freeRenderContext();
    m_smartTimer.reset();
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
    if (context())
        createRenderContext();
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

CapturedPicture PlayerHostingView::recordingPicture(const QRect &rect)
{
    if (!isValid() || m_framesDrawn == 0)
        return {};
    const double dpr = devicePixelRatioF();
    const QSize buffer = size() * dpr;
    const QRect pixels =
        QRect(QPoint(int(std::floor(rect.left() * dpr)), int(std::floor(rect.top() * dpr))),
              QSize(int(std::lround(rect.width() * dpr)), int(std::lround(rect.height() * dpr))))
            .intersected(QRect(QPoint(0, 0), buffer));
    if (pixels.isEmpty())
        return {};
    QImage image(pixels.size(), QImage::Format_RGBA8888);
    makeCurrent();
    glBindFramebuffer(GL_FRAMEBUFFER, defaultFramebufferObject());
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    // OpenGL counts rows from the bottom; the rows arrive bottom first and stay so.
    glReadPixels(pixels.left(), buffer.height() - pixels.bottom() - 1, pixels.width(),
                 pixels.height(), GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    doneCurrent();
    return {std::move(image), true};
}

void PlayerHostingView::initializeGL()
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
    // A new window for the widget replaces its context: everything made in the old one goes
    // with it, and is made again here.
    connect(context(), &QOpenGLContext::aboutToBeDestroyed, this,
            &PlayerHostingView::freeRenderContext, Qt::DirectConnection);
    if (m_player)
        createRenderContext();
}

void PlayerHostingView::createRenderContext()
{
    if (m_render || !m_player || !m_player->isValid())
        return;
    makeCurrent();
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
        doneCurrent();
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
    doneCurrent();
}

void PlayerHostingView::freeRenderContext()
{
    if (!m_render)
        return;
    // The render context goes with the OpenGL context it was made in, current.
    makeCurrent();
    mpv_render_context_set_update_callback(m_render, nullptr, nullptr);
    mpv_render_context_free(m_render);
    m_render = nullptr;
    m_frame.reset();
    m_frameHoldsPicture = false;
    doneCurrent();
    if (m_player)
        m_player->renderContextFreed();
}

void PlayerHostingView::frameReady()
{
    // mpv also calls for changes that need no new picture; only a frame is worth a repaint.
    if (!m_render || !(mpv_render_context_update(m_render) & MPV_RENDER_UPDATE_FRAME))
        return;
    m_hasNewFrame = true;
    // Hidden, the widget is not repainted, yet mpv waits for its frames to be taken: draw them
    // anyway so that playback, and its sound, go on.
    if (isVisible() && !(window()->windowState() & Qt::WindowMinimized)) {
        update();
        return;
    }
    makeCurrent();
    paintGL();
    doneCurrent();
}

void PlayerHostingView::paintGL()
{
    const QSize pixels = size() * devicePixelRatioF();
    glClearColor(0, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    ++m_framesDrawn;
    if (!m_render)
        return;
    if (m_displayMode == PortraitDisplayMode::normal)
        renderDirect(pixels);
    else
        renderFramed(currentLayout(), pixels);
    if (m_hasNewFrame) {
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
    // Whole and letterboxed is mpv's own layout: it draws straight into the widget.
    mpv_opengl_fbo target{int(defaultFramebufferObject()), pixels.width(), pixels.height(), 0};
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
    glBindFramebuffer(GL_FRAMEBUFFER, defaultFramebufferObject());
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
    drawTexture(m_frame->texture(), vertices);
    glDisable(GL_SCISSOR_TEST);
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
