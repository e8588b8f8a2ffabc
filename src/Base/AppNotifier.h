#pragma once

#include <QObject>
#include <QStringView>

// The application's notifications: what the user did to the picture and the mouse, posted by the
// views and monitors that see it and heard by the main window and the control socket. The object
// is the QWindow concerned (a widget's is its window()->windowHandle()). The application makes
// one and hands it to whoever posts or listens.
class AppNotifier : public QObject
{
    Q_OBJECT

public:
    static constexpr QStringView playerSurfaceClickedName = u"VelmPlayerPro.playerSurfaceClicked";
    static constexpr QStringView playerMouseMovedName = u"VelmPlayerPro.playerMouseMoved";

    using QObject::QObject;

Q_SIGNALS:
    // A mouse press on the video surface or a web player.
    void playerSurfaceClicked(QObject *window);
    // The mouse moved over some window of the application.
    void playerMouseMoved(QObject *window);
};
