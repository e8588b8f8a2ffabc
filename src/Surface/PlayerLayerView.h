#pragma once

#include "Surface/PortraitDisplayMode.h"

#include <QWidget>

class AppNotifier;
class MpvEngine;
class PlayerHostingView;
class PlayerSurfaceRegistry;

// The media engine's picture in the video area: holds the hosting view and brings it up to date
// with the player, the display mode and the full-screen state. Made when the area shows media,
// destroyed when it shows a web player; a new one starts centred.
class PlayerLayerView : public QWidget
{
    Q_OBJECT

public:
    PlayerLayerView(PlayerSurfaceRegistry &surfaces, AppNotifier &notifier,
                    QWidget *parent = nullptr);

    // On making and on every change: registers the hosting view as the recordable surface, then
    // gives it the player, the mode and the full-screen state, in that order.
    void apply(MpvEngine &player, PortraitDisplayMode mode, bool fillScreen);

    PlayerHostingView *hostingView() const { return m_hostingView; }

private:
    PlayerSurfaceRegistry &m_surfaces;
    PlayerHostingView *m_hostingView;
};
