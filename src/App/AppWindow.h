#pragma once

#include <QMainWindow>

// The application's one window, titled with the product name, 700 × 430 when first opened; its
// content never shrinks below 520 × 360.
class AppWindow : public QMainWindow
{
    Q_OBJECT

public:
    static constexpr QSize defaultSize{700, 430};
    static constexpr QSize minimumContentSize{520, 360};

    explicit AppWindow(QWidget *parent = nullptr);

    // Puts the window's content in place; it never shrinks below minimumContentSize.
    void setContent(QWidget *content);

Q_SIGNALS:
    // The window was shown for the first time.
    void appeared();

protected:
    void showEvent(QShowEvent *event) override;

private:
    bool m_hasAppeared = false;
};
