#include "Surface/PlayerLayerView.h"

#include "Recording/PlayerSurfaceRegistry.h"
#include "Surface/PlayerHostingView.h"

#include <QVBoxLayout>

PlayerLayerView::PlayerLayerView(PlayerSurfaceRegistry &surfaces, AppNotifier &notifier,
                                 QWidget *parent)
    : QWidget(parent), m_surfaces(surfaces), m_hostingView(new PlayerHostingView(notifier, this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_hostingView);
}

void PlayerLayerView::apply(MpvEngine &player, PortraitDisplayMode mode, bool fillScreen)
{
    m_surfaces.hold(m_hostingView);
    m_hostingView->setPlayer(&player);
    m_hostingView->setDisplayMode(mode);
    m_hostingView->setFillScreen(fillScreen);
}
