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
