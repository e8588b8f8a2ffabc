#pragma once

#include "Base/WebAddress.h"

#include <QApplication>

// The application object. Files the system hands over while the application runs (opened with it
// from the file manager on macOS) arrive as openRequested.
class VelmApplication : public QApplication
{
    Q_OBJECT

public:
    VelmApplication(int &argc, char **argv);

Q_SIGNALS:
    void openRequested(const WebAddress &url);

protected:
    bool event(QEvent *event) override;
};
