#pragma once

#include <QAbstractButton>

// The empty video area's invitation: the whole area is one button that opens the file picker,
// showing a symbol, "Click to open media" and "or drop a video or audio file here".
class PlayerPromptButton : public QAbstractButton
{
    Q_OBJECT

public:
    explicit PlayerPromptButton(QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QFont titleFont() const;
    QFont detailFont() const;
};
