#pragma once

#include <QWidget>

class ContentState;
class QLineEdit;
class QMenu;
class QToolButton;

// The search field and the country and category menus above a channel list. The search and the
// two choices are the window's, shared by both panels; the menus offer the choices of the list
// shown when they open.
class ChannelFilterBar : public QWidget
{
    Q_OBJECT

public:
    ChannelFilterBar(ContentState &state, const QString &searchPlaceholder,
                     QWidget *parent = nullptr);

    QLineEdit *searchField() const { return m_search; }
    QToolButton *countryButton() const { return m_country; }
    QToolButton *categoryButton() const { return m_category; }

private:
    void fillCountryMenu();
    void fillCategoryMenu();
    void refresh();

    ContentState &m_state;
    QLineEdit *m_search;
    QToolButton *m_country;
    QToolButton *m_category;
};
