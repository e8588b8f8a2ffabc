#include "App/AppWindow.h"

#include "App/AppIdentity.h"

AppWindow::AppWindow(QWidget *parent) : QMainWindow(parent)
{
    setWindowTitle(AppIdentity::displayName.toString());
    auto *content = new QWidget(this);
    content->setMinimumSize(minimumContentSize);
    setCentralWidget(content);
    resize(defaultSize);
}

void AppWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (!m_hasAppeared) {
        m_hasAppeared = true;
        Q_EMIT appeared();
    }
}
