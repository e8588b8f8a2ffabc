#include "Surface/BufferingBadge.h"

#include "Surface/SurfaceTexts.h"

#include <QGraphicsDropShadowEffect>
#include <QPainter>

namespace {
constexpr int spinnerSize = 20;
constexpr int spacing = 10;
constexpr int spokes = 12;
} // namespace

BufferingBadge::BufferingBadge(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAttribute(Qt::WA_TranslucentBackground);
    auto *shadow = new QGraphicsDropShadowEffect(this);
    shadow->setColor(QColor(0, 0, 0, qRound(0.9 * 255)));
    shadow->setBlurRadius(3);
    shadow->setOffset(0, 1);
    setGraphicsEffect(shadow);
    m_spin.setInterval(1000 / spokes);
    connect(&m_spin, &QTimer::timeout, this, [this] {
        m_step = (m_step + 1) % spokes;
        update();
    });
}

QFont BufferingBadge::captionFont() const
{
    QFont font = this->font();
    font.setPointSizeF(std::max(font.pointSizeF() - 2, 7.0));
    font.setWeight(QFont::Medium);
    return font;
}

QSize BufferingBadge::sizeHint() const
{
    const QFontMetrics caption(captionFont());
    return {std::max(spinnerSize, caption.horizontalAdvance(SurfaceTexts::buffering.toString())) +
                8,
            spinnerSize + spacing + caption.height() + 8};
}

void BufferingBadge::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF centre(width() / 2.0, 4 + spinnerSize / 2.0);
    for (int i = 0; i < spokes; ++i) {
        // The spoke at the current step is brightest; the others fade behind it.
        const int age = (m_step - i + spokes) % spokes;
        QColor color(Qt::white);
        color.setAlphaF(float(1.0 - 0.8 * age / spokes));
        painter.setPen(QPen(color, 2, Qt::SolidLine, Qt::RoundCap));
        painter.save();
        painter.translate(centre);
        painter.rotate(360.0 * i / spokes);
        painter.drawLine(QPointF(0, -spinnerSize / 4.0), QPointF(0, -spinnerSize / 2.0));
        painter.restore();
    }
    QColor text(Qt::white);
    text.setAlphaF(0.85f);
    painter.setPen(text);
    painter.setFont(captionFont());
    painter.drawText(
        QRect(0, 4 + spinnerSize + spacing, width(), QFontMetrics(captionFont()).height()),
        Qt::AlignCenter, SurfaceTexts::buffering.toString());
}

void BufferingBadge::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_spin.start();
}

void BufferingBadge::hideEvent(QHideEvent *event)
{
    m_spin.stop();
    QWidget::hideEvent(event);
}
