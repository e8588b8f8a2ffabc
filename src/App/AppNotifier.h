#pragma once

#include <QObject>
#include <QStringView>

// The process-wide notifications: what the user did to the picture and the mouse, posted by the
// views and monitors that see it and heard by the main window. The object is the QWindow
// concerned (a widget's is its window()->windowHandle()).
class AppNotifier : public QObject
{
    Q_OBJECT

public:
    static constexpr QStringView playerSurfaceClickedName = u"VelmPlayerPro.playerSurfaceClicked";
    static constexpr QStringView playerMouseMovedName = u"VelmPlayerPro.playerMouseMoved";

    static AppNotifier &shared();

Q_SIGNALS:
    // A mouse press on the video surface or a web player.
    void playerSurfaceClicked(QObject *window);
    // The mouse moved over some window of the application.
    void playerMouseMoved(QObject *window);

private:
    AppNotifier() = default;
};
