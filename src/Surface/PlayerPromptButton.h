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
    void changeEvent(QEvent *event) override;

private:
    void deriveFonts();

    // Kept rather than derived at each paint: a font held keeps its engine, which Qt's font cache
    // would otherwise drop and build again (tens of milliseconds) when a long list's painting
    // fills the cache.
    QFont m_titleFont;
    QFont m_detailFont;
};
