#pragma once

#include <QWidget>

class ContentState;
class LocalM3UPanel;
class NetworkPanel;
class QPropertyAnimation;
class QStackedWidget;
class QToolButton;

// The sidebar: the two section buttons and the panel of the section chosen. It slides in and out
// as the window's state asks.
class SidebarView : public QWidget
{
    Q_OBJECT

public:
    static constexpr int preferredWidth = 300;

    SidebarView(ContentState &state, NetworkPanel *network, LocalM3UPanel *local,
                QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QToolButton *sectionButton(int index) const { return index == 0 ? m_network : m_local; }
    // The panel shown now.
    QWidget *currentPanel() const;
    // True while sliding in or out.
    bool isAnimating() const;

private:
    void refreshSection();
    void slide();

    ContentState &m_state;
    QToolButton *m_network;
    QToolButton *m_local;
    QStackedWidget *m_panels;
    QPropertyAnimation *m_slide;
};
