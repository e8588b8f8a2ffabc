#include "Surface/PlayerPromptButton.h"

#include "Base/SymbolIcons.h"
#include "Surface/SurfaceTexts.h"

#include <QEvent>
#include <QPainter>

namespace {
constexpr int symbolSize = 52;
constexpr int spacing = 12;
constexpr int padding = 28;

QColor white(double opacity)
{
    QColor color(Qt::white);
    color.setAlphaF(float(opacity));
    return color;
}
} // namespace

PlayerPromptButton::PlayerPromptButton(QWidget *parent) : QAbstractButton(parent)
{
    setToolTip(SurfaceTexts::promptToolTip.toString());
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::NoFocus);
    deriveFonts();
}

void PlayerPromptButton::deriveFonts()
{
    m_titleFont = font();
    m_titleFont.setWeight(QFont::DemiBold);
    m_detailFont = font();
    m_detailFont.setPointSizeF(std::max(m_detailFont.pointSizeF() - 2, 7.0));
}

void PlayerPromptButton::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        deriveFonts();
    QAbstractButton::changeEvent(event);
}

QSize PlayerPromptButton::sizeHint() const
{
    const QFontMetrics title(m_titleFont);
    const QFontMetrics detail(m_detailFont);
    const int width =
        std::max({symbolSize, title.horizontalAdvance(SurfaceTexts::promptTitle.toString()),
                  detail.horizontalAdvance(SurfaceTexts::promptDetail.toString())});
    const int height = symbolSize + spacing + title.height() + spacing + detail.height();
    return {width + 2 * padding, height + 2 * padding};
}

void PlayerPromptButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QFontMetrics title(m_titleFont);
    const QFontMetrics detail(m_detailFont);
    const int stackHeight = symbolSize + spacing + title.height() + spacing + detail.height();
    int y = (height() - stackHeight) / 2;

    const QPixmap symbol =
        SymbolIcons::pixmap(u"play.rectangle", symbolSize, white(0.38), devicePixelRatioF());
    painter.drawPixmap((width() - symbolSize) / 2, y, symbol);
    y += symbolSize + spacing;
    painter.setFont(m_titleFont);
    painter.setPen(white(0.72));
    painter.drawText(QRect(0, y, width(), title.height()), Qt::AlignCenter,
                     SurfaceTexts::promptTitle.toString());
    y += title.height() + spacing;
    painter.setFont(m_detailFont);
    painter.setPen(white(0.45));
    painter.drawText(QRect(0, y, width(), detail.height()), Qt::AlignCenter,
                     SurfaceTexts::promptDetail.toString());
}
