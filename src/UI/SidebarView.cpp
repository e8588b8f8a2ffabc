#include "UI/SidebarView.h"

#include "Base/SymbolIcons.h"
#include "UI/ContentState.h"
#include "UI/LocalM3UPanel.h"
#include "UI/NetworkPanel.h"
#include "UI/WindowTexts.h"

#include <QHBoxLayout>
#include <QPropertyAnimation>
#include <QStackedWidget>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

QToolButton *makeSectionButton(QStringView symbol, const QString &title, QWidget *parent)
{
    auto *button = new QToolButton(parent);
    button->setObjectName(QStringLiteral("section"));
    button->setIcon(SymbolIcons::icon(symbol));
    button->setText(title);
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setCheckable(true);
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}

} // namespace

SidebarView::SidebarView(ContentState &state, NetworkPanel *network, LocalM3UPanel *local,
                         QWidget *parent)
    : QWidget(parent), m_state(state),
      m_network(makeSectionButton(u"antenna.radiowaves.left.and.right",
                                  WindowTexts::networkSection.toString(), this)),
      m_local(makeSectionButton(u"list.and.film", WindowTexts::localSection.toString(), this)),
      m_panels(new QStackedWidget(this)),
      m_slide(new QPropertyAnimation(this, "maximumWidth", this))
{
    setObjectName(QStringLiteral("Sidebar"));
    setAttribute(Qt::WA_StyledBackground);
    setMaximumWidth(preferredWidth);
    setMinimumWidth(0);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    auto *column = new QVBoxLayout(this);
    // The width slides down to nothing: the panels' own minimum widths must not hold it open.
    column->setSizeConstraint(QLayout::SetNoConstraint);
    column->setContentsMargins(0, 10, 0, 0);
    column->setSpacing(0);
    auto *sections = new QHBoxLayout;
    sections->setContentsMargins(10, 0, 10, 0);
    sections->setSpacing(4);
    sections->addWidget(m_network);
    sections->addWidget(m_local);
    column->addLayout(sections);
    m_panels->addWidget(network);
    m_panels->addWidget(local);
    column->addWidget(m_panels, 1);

    m_slide->setEasingCurve(QEasingCurve::InOutQuad);
    connect(m_slide, &QPropertyAnimation::finished, this, [this] {
        if (!m_state.showSidebar())
            hide();
    });
    connect(m_network, &QToolButton::clicked, this,
            [this] { m_state.setSelectedSidebarSection(PlayerSidebarSection::network); });
    connect(m_local, &QToolButton::clicked, this,
            [this] { m_state.setSelectedSidebarSection(PlayerSidebarSection::localM3U); });
    connect(&m_state, &ContentState::selectedSidebarSectionChanged, this,
            &SidebarView::refreshSection);
    connect(&m_state, &ContentState::showSidebarChanged, this, &SidebarView::slide);
    refreshSection();
    setVisible(m_state.showSidebar());
}

QSize SidebarView::sizeHint() const
{
    return {preferredWidth, QWidget::sizeHint().height()};
}

QWidget *SidebarView::currentPanel() const
{
    return m_panels->currentWidget();
}

bool SidebarView::isAnimating() const
{
    return m_slide->state() == QAbstractAnimation::Running;
}

void SidebarView::refreshSection()
{
    const std::optional<PlayerSidebarSection> section = m_state.selectedSidebarSection();
    m_network->setChecked(section == PlayerSidebarSection::network);
    m_local->setChecked(section == PlayerSidebarSection::localM3U);
    // With no section chosen the network panel is what is listed.
    m_panels->setCurrentIndex(section == PlayerSidebarSection::localM3U ? 1 : 0);
}

void SidebarView::slide()
{
    const bool show = m_state.showSidebar();
    m_slide->stop();
    m_slide->setDuration(int(m_state.sidebarAnimation().count()));
    m_slide->setStartValue(isVisible() ? width() : 0);
    m_slide->setEndValue(show ? preferredWidth : 0);
    if (show) {
        setMaximumWidth(isVisible() ? width() : 0);
        QWidget::show();
    }
    m_slide->start();
}
