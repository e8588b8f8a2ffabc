#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <optional>

class AppSession;
class QWidget;

// --screenshot: once the window shows what was opened (the first video frame, a loaded channel
// list or an error), or after a fixed wait, saves a picture of the window and quits. Waiting for
// the first frame gives up after 5 s and takes the picture as it is.
class WindowScreenshot : public QObject
{
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds longestWait{5000};

    // after: a fixed wait in seconds instead of waiting for the content.
    WindowScreenshot(AppSession &session, const QString &path, std::optional<double> after,
                     bool opensSomething, QObject *parent = nullptr);

    // Saves a picture of the window in the format its file name ends with (".png", ".jpg", …).
    // Returns the reason when it cannot: an ending that names no picture format, or the write.
    static std::optional<QString> save(QWidget &window, const QString &path);

private:
    void contentShown();
    void take();

    AppSession &m_session;
    QString m_path;
    QTimer m_deadline;
    bool m_taking = false;
};
