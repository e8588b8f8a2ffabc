#pragma once

#include <QTimer>
#include <QWidget>

// "Buffering…" under a turning spinner, in white with a soft shadow over the picture. Clicks go
// through it to the picture.
class BufferingBadge : public QWidget
{
    Q_OBJECT

public:
    explicit BufferingBadge(QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QFont captionFont() const;

    QTimer m_spin;
    int m_step = 0;
};
