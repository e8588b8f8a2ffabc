#include "UI/ChannelFilterBar.h"

#include "Base/SymbolIcons.h"
#include "Playlist/ChannelListModel.h"
#include "Playlist/CountryNames.h"
#include "UI/ContentState.h"
#include "UI/WindowTexts.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

QToolButton *menuButton(QWidget *parent)
{
    auto *button = new QToolButton(parent);
    button->setObjectName(QStringLiteral("filterMenu"));
    button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setFocusPolicy(Qt::NoFocus);
    button->setMenu(new QMenu(button));
    button->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    return button;
}

// A choice of a filter menu, ticked when it is the one chosen.
QAction *addChoice(QMenu *menu, const QString &label, bool ticked,
                   const std::function<void()> &choose)
{
    QAction *item = menu->addAction(label);
    item->setCheckable(true);
    item->setChecked(ticked);
    QObject::connect(item, &QAction::triggered, menu, choose);
    return item;
}

// "Countries" or "Category" with its symbol, ticked when nothing is chosen, then a divider.
void addClearingItem(QMenu *menu, const QString &label, QStringView symbol, bool ticked,
                     const std::function<void()> &choose)
{
    addChoice(menu, label, ticked, choose)->setIcon(SymbolIcons::icon(symbol));
    menu->addSeparator();
}

} // namespace

ChannelFilterBar::ChannelFilterBar(ContentState &state, const QString &searchPlaceholder,
                                   QWidget *parent)
    : QWidget(parent), m_state(state)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    m_search = new QLineEdit(this);
    m_search->setObjectName(QStringLiteral("search"));
    m_search->setPlaceholderText(searchPlaceholder);
    m_search->setClearButtonEnabled(true);
    column->addWidget(m_search);
    auto *menus = new QHBoxLayout;
    menus->setSpacing(4);
    m_country = menuButton(this);
    m_category = menuButton(this);
    menus->addWidget(m_country, 1);
    menus->addWidget(m_category, 1);
    column->addLayout(menus);

    connect(m_search, &QLineEdit::textEdited, this,
            [this](const QString &text) { m_state.setChannelSearch(text); });
    connect(m_country->menu(), &QMenu::aboutToShow, this, &ChannelFilterBar::fillCountryMenu);
    connect(m_category->menu(), &QMenu::aboutToShow, this, &ChannelFilterBar::fillCategoryMenu);
    connect(&m_state, &ContentState::filtersChanged, this, &ChannelFilterBar::refresh);
    refresh();
}

void ChannelFilterBar::fillCountryMenu()
{
    QMenu *menu = m_country->menu();
    menu->clear();
    const std::optional<QString> chosen = m_state.selectedCountryCode();
    addClearingItem(menu, WindowTexts::countries.toString(), u"globe", !chosen,
                    [this] { m_state.setSelectedCountryCode(std::nullopt); });
    for (const QString &code : m_state.displayedChannels().countryCodes())
        addChoice(menu, CountryNames::englishName(code), chosen == code,
                  [this, code] { m_state.setSelectedCountryCode(code); });
}

void ChannelFilterBar::fillCategoryMenu()
{
    QMenu *menu = m_category->menu();
    menu->clear();
    const std::optional<QString> chosen = m_state.selectedCategory();
    addClearingItem(menu, WindowTexts::category.toString(), u"square.grid.2x2", !chosen,
                    [this] { m_state.setSelectedCategory(std::nullopt); });
    for (const QString &category : m_state.displayedChannels().categories())
        addChoice(menu, category, chosen == category,
                  [this, category] { m_state.setSelectedCategory(category); });
}

void ChannelFilterBar::refresh()
{
    if (m_search->text() != m_state.channelSearch())
        m_search->setText(m_state.channelSearch());
    const std::optional<QString> country = m_state.selectedCountryCode();
    m_country->setText(country ? CountryNames::englishName(*country)
                               : WindowTexts::countries.toString());
    m_country->setIcon(SymbolIcons::icon(u"globe"));
    const std::optional<QString> category = m_state.selectedCategory();
    m_category->setText(category.value_or(WindowTexts::category.toString()));
    m_category->setIcon(SymbolIcons::icon(u"square.grid.2x2"));
}
