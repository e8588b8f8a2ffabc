#pragma once

#include <QWidget>

#include <optional>

class QLabel;
class QPushButton;

// The small panel that floats over every window while a recording runs: the running time and a
// red button that stops it. It never takes the focus from the player, stays above other windows,
// and moves when dragged by its background.
class RecordingPanel : public QWidget
{
    Q_OBJECT

public:
    // Wider with an automatic stop, which adds the time left.
    explicit RecordingPanel(bool withAutomaticStop);

    void setText(const QString &text);
    QString text() const;
    // Near the top-right corner of the available area of the screen.
    void placeOn(const QScreen *screen);

Q_SIGNALS:
    void stopRequested();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    QLabel *m_label;
    QPushButton *m_stop;
    std::optional<QPoint> m_dragOffset;
};
