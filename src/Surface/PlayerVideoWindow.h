#pragma once

#include <QOpenGLWindow>

#include <functional>

// The native OpenGL window the video is drawn in, embedded in the hosting view. A frame drawn
// here goes to the screen as it is: a widget's OpenGL picture is instead drawn again into its
// window together with the other widgets, two more passes over the whole window per frame, which
// cost a software renderer about as much as the video itself.
//
// It takes no input: presses, moves, the wheel and drops fall through to the widgets beneath it,
// which therefore behave as if the window were not there.
class PlayerVideoWindow : public QOpenGLWindow
{
    Q_OBJECT

public:
    // initialize runs once the window's OpenGL context exists and is current; paint draws a
    // frame, with the context current and the window's framebuffer bound; leaving runs while the
    // window can still be drawn in for the last time, before its native window goes, whoever
    // destroys it (a top-level window made anew destroys the windows embedded in it).
    PlayerVideoWindow(std::function<void()> initialize, std::function<void()> paint,
                      std::function<void()> leaving);

protected:
    void initializeGL() override;
    void paintGL() override;
    bool event(QEvent *event) override;

private:
    std::function<void()> m_initialize;
    std::function<void()> m_paint;
    std::function<void()> m_leaving;
};
