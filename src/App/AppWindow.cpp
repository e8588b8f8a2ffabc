#include "App/AppWindow.h"

#include "Base/AppIdentity.h"

AppWindow::AppWindow(QWidget *parent) : QMainWindow(parent)
{
    setWindowTitle(AppIdentity::displayName.toString());
    setContent(new QWidget(this));
    resize(defaultSize);
}

void AppWindow::setContent(QWidget *content)
{
    content->setMinimumSize(minimumContentSize);
    setCentralWidget(content);
}

void AppWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (!m_hasAppeared) {
        m_hasAppeared = true;
        Q_EMIT appeared();
    }
}
