#pragma once

#include <QFrame>

class QLabel;
class QToolButton;

// The notice over the picture that media did not play: the reason, and a button that dismisses
// it. It shows what it is given; the player model decides when there is a notice.
class PlaybackFailureNotice : public QFrame
{
    Q_OBJECT

public:
    explicit PlaybackFailureNotice(QWidget *parent = nullptr);

    void setText(const QString &text);
    QString text() const;
    QToolButton *dismissButton() const { return m_dismiss; }

Q_SIGNALS:
    void dismissed();

private:
    QLabel *m_text;
    QToolButton *m_dismiss;
};
