#pragma once

#include "Player/VideoPlacement.h"
#include "Recording/PlayerRecordingSurface.h"
#include "Surface/FaceBox.h"
#include "Surface/PlayerLayerLayout.h"
#include "Surface/PortraitDisplayMode.h"

#include <QElapsedTimer>
#include <QOpenGLFunctions>
#include <QPointer>
#include <QWidget>

#include <array>
#include <memory>
#include <optional>
#include <vector>

class AppNotifier;
class FaceSearch;
class MpvEngine;
class PlayerVideoWindow;
class QOpenGLBuffer;
class QOpenGLFramebufferObject;
class QOpenGLShaderProgram;
class QTimer;
struct mpv_render_context;

// Draws the media engine's video with OpenGL, framed by the display mode: whole and letterboxed
// in the normal mode, else inside the 9:16 box (filled, turned, or panned by hand), black
// elsewhere. The only user of mpv's render API. It draws when mpv has a new frame or the layout
// changes, and nothing otherwise, in a native window of its own that fills the view.
//
// Mouse: a double-click toggles the window's full screen and nothing else; any other press is
// announced as a click on the picture, then pans the picture in the manual mode or moves the
// window in the others.
class PlayerHostingView : public QWidget, protected QOpenGLFunctions, public PlayerRecordingSurface
{
    Q_OBJECT

public:
    // Presses on the picture are announced through the notifier.
    explicit PlayerHostingView(AppNotifier &notifier, QWidget *parent = nullptr);
    ~PlayerHostingView() override;

    // The engine whose video is drawn; its render context is made once OpenGL is ready.
    void setPlayer(MpvEngine *player);
    PortraitDisplayMode displayMode() const { return m_displayMode; }
    // Fill and rotate start centred (pan 0); the other modes keep the last pan, so a framing
    // made by hand survives a trip through another mode.
    void setDisplayMode(PortraitDisplayMode mode);
    bool fillScreen() const { return m_fillScreen; }
    // The layout is the same in and out of full screen; a change only lays out again.
    void setFillScreen(bool fillScreen);
    double horizontalPan() const { return m_horizontalPan; }
    // −1 … 1 (clamped): the picture's right edge at the box's right edge … left at left.
    void setHorizontalPan(double pan);
    // Whether the smart mode's steps are being taken.
    bool isTrackingFaces() const { return m_smartTimer != nullptr; }

    PlayerLayerLayout currentLayout() const;

    QWidget *recordingView() override { return this; }
    // The whole view in the normal mode, else the 9:16 box: a recording holds only what shows.
    QRect recordingRectInView() const override;
    // Reads back the frame drawn last; the view does not draw again for it, but for the first
    // time it is asked after a pause of a second: only while frames are asked for are they kept
    // where they can be read back.
    CapturedPicture recordingPicture(const QRect &rect) override;
    // The whole picture as the view shows it now, top row first; null before anything was drawn.
    QImage grabFramebuffer();
    // Frames drawn so far, whatever made them draw.
    quint64 framesDrawn() const { return m_framesDrawn; }

Q_SIGNALS:
    void horizontalPanChanged();
    // A drawn frame went to the screen.
    void frameSwapped();
    // A new video frame has been drawn.
    void frameShown();
    // A smart step has ended: the CPU time it took on this thread, to start it and to apply its
    // result, and the CPU time of the search on its own thread.
    void faceSearchMeasured(double windowThreadMs, double searchCpuMs);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    // The part of a widget lying over the picture, and its picture at the view's pixel ratio.
    struct Overlay
    {
        QRect covered;
        QImage image;
    };
    struct PanDrag
    {
        double startX;
        double startPan;
    };
    struct WindowDrag
    {
        QPoint startGlobal;
        QPoint startWindow;
    };

    // Starts the smart mode's steps when the mode is smart, and stops them otherwise.
    void updateSmartTimer();
    // One step of the smart mode: the newest frame not yet searched goes to the face search, and
    // its result moves the pan (see SmartReframe).
    void trackLargestFace();
    void faceSearchEnded(const std::optional<std::vector<FaceBox>> &faces, quint64 generation);
    void storeHorizontalPan(double pan, bool repaint);
    // What was learnt of the media so far is of no use: a new load began.
    void forgetShownFrames();

    void makeWindow();
    // The window's native window is about to go: the render context goes first, with the window's
    // OpenGL context current, and a window taken with its top-level window is made anew.
    void windowLeaving();
    void replaceLostWindow();
    void initializeVideo();
    void paintVideo();
    // Draws a frame now, outside the window's own painting, and keeps it.
    bool paintShownFrame();
    CapturedPicture readShownFrame(const QRect &rect);
    // Whether a recording or a grab asked for a frame in the last second.
    bool keepsShownFrames() const;
    // Sets the framebuffer this frame is drawn into: the kept frame's while frames are asked
    // for (true), else the window's own.
    bool chooseTarget(QSize pixels);
    // Needs the window's OpenGL context current.
    void createRenderContext();
    void freeRenderContext();
    void frameReady();
    void relayout();
    void renderDirect(QSize pixels);
    void renderFramed(const PlayerLayerLayout &layout, QSize pixels);
    // mpv draws only what the box shows, into a buffer of the box's size.
    void renderBox(const PlayerLayerLayout &layout, const std::array<QPointF, 4> &corners,
                   QSize pixels);
    // Whether the picture is drawn box-sized: every mode that does not turn it.
    bool drawsOnlyTheBox(double aspect) const;
    // Has mpv draw its frame into m_frame at that size and placement, unless it holds it already.
    bool renderIntoFrame(QSize size, const VideoPlacement &placement);
    bool prepareFrameBuffer(QSize size);
    // corners: where the picture's top-left, top-right, bottom-right and bottom-left go.
    void drawPicture(const PlayerLayerLayout &layout, const std::array<QPointF, 4> &corners,
                     QSize pixels);
    // Draws a texture on a quad; vertices: x, y, s, t for each corner of a fan.
    void drawTexture(GLuint texture, const std::array<float, 16> &vertices);
    void startWindowDrag(QMouseEvent *event);
    // The native window hides the widgets over the picture, so it draws them itself: they are
    // pictured again whenever the window's widgets were repainted, and drawn when that changed
    // what lies over the picture.
    void watchWindow();
    void refreshOverlays();
    void drawOverlays(QSize pixels);
    // What was made in the window's OpenGL context for drawing, with it current.
    void releaseWindowBuffers();
    // The vertices of a quad with the texture upright, its corners given in the view's
    // coordinates from the top-left clockwise.
    std::array<float, 16> quadVertices(const std::array<QPointF, 4> &corners) const;

    AppNotifier &m_notifier;
    // Made anew when a top-level window made anew took the window with it.
    QPointer<PlayerVideoWindow> m_window; // owned by m_container
    QPointer<QWidget> m_container;
    bool m_closing = false;
    QPointer<MpvEngine> m_player;
    mpv_render_context *m_render = nullptr;
    PortraitDisplayMode m_displayMode = PortraitDisplayMode::normal;
    bool m_fillScreen = false;
    double m_horizontalPan = 0;
    bool m_hasNewFrame = false;
    quint64 m_framesDrawn = 0;

    std::unique_ptr<QTimer> m_smartTimer;
    std::unique_ptr<FaceSearch> m_faceSearch; // made with the first step
    bool m_stepUnderWay = false;              // its frame on the way to the search, or searched
    double m_stepStartCpuMs = 0;              // this thread's CPU time in starting it
    // The playback time of the frame drawn last, and of the frame searched last.
    std::optional<double> m_shownFrameTime;
    std::optional<double> m_searchedFrameTime;
    // Changes with the mode and with each load: a search started before is not applied.
    quint64 m_smartGeneration = 0;

    std::unique_ptr<QOpenGLFramebufferObject> m_frame;
    // m_frame holds mpv's newest frame at its size and m_framePlacement; else mpv must draw it
    // before it is placed.
    bool m_frameHoldsPicture = false;
    VideoPlacement m_framePlacement;
    // The frames drawn while they are asked for, and when they were asked for last.
    std::unique_ptr<QOpenGLFramebufferObject> m_shown;
    QElapsedTimer m_sinceAsked;
    GLuint m_target = 0;
    std::unique_ptr<QOpenGLShaderProgram> m_program;
    std::unique_ptr<QOpenGLBuffer> m_vertices;

    QPointer<QWidget> m_watchedWindow;
    std::vector<Overlay> m_overlays;
    std::vector<Overlay> m_spareOverlays; // painted again at each refresh
    std::vector<GLuint> m_overlayTextures;
    bool m_overlaysChanged = false;

    std::optional<PanDrag> m_panDrag;
    std::optional<WindowDrag> m_windowDrag;
};
