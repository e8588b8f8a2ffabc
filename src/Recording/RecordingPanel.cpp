#include "Recording/RecordingPanel.h"

#include "Recording/RecordingDuration.h"
#include "Recording/RecordingTexts.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QWindow>

namespace {

constexpr QSize compactSize(210, 48);
constexpr QSize wideSize(310, 48);
constexpr int labelInset = 13;
constexpr int buttonInset = 10;
constexpr int screenMargin = 18;
constexpr int labelPointSize = 12;
constexpr int cornerRadius = 10;
// The heads-up look: dark, a little see-through.
constexpr QColor background(30, 30, 30, 225);
constexpr QColor stopRed(255, 59, 48);

} // namespace

RecordingPanel::RecordingPanel(bool withAutomaticStop)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                           Qt::WindowDoesNotAcceptFocus)
{
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_DeleteOnClose, false);
    setFocusPolicy(Qt::NoFocus);
    setFixedSize(withAutomaticStop ? wideSize : compactSize);

    m_label = new QLabel(recordingPanelText(0, std::nullopt), this);
    // Fixed-width digits, so the time does not jitter as it counts.
    QFont digits = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    digits.setPointSize(labelPointSize);
    digits.setWeight(QFont::DemiBold);
    m_label->setFont(digits);
    QPalette white = m_label->palette();
    white.setColor(QPalette::WindowText, Qt::white);
    m_label->setPalette(white);

    m_stop = new QPushButton(RecordingTexts::stopRecording.toString(), this);
    m_stop->setFocusPolicy(Qt::NoFocus);
    m_stop->setCursor(Qt::ArrowCursor);
    m_stop->setStyleSheet(QStringLiteral("QPushButton { color: white; background: %1; border: none;"
                                         " border-radius: 9px; padding: 3px 10px; }"
                                         "QPushButton:pressed { background: %2; }")
                              .arg(stopRed.name(), stopRed.darker(130).name()));
    connect(m_stop, &QPushButton::clicked, this, &RecordingPanel::stopRequested);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(labelInset, 0, buttonInset, 0);
    layout->addWidget(m_label, 0, Qt::AlignVCenter);
    layout->addStretch();
    layout->addWidget(m_stop, 0, Qt::AlignVCenter);
}

void RecordingPanel::setText(const QString &text)
{
    m_label->setText(text);
}

QString RecordingPanel::text() const
{
    return m_label->text();
}

void RecordingPanel::placeOn(const QScreen *screen)
{
    if (!screen)
        return;
    const QRect available = screen->availableGeometry();
    move(available.right() + 1 - screenMargin - width(), available.top() + screenMargin);
}

void RecordingPanel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(background);
    painter.drawRoundedRect(rect(), cornerRadius, cornerRadius);
}

void RecordingPanel::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    // The window system moves it where it can; elsewhere the drag moves it here.
    if (QWindow *handle = windowHandle(); handle && handle->startSystemMove())
        return;
    m_dragOffset = event->globalPosition().toPoint() - pos();
}

void RecordingPanel::mouseMoveEvent(QMouseEvent *event)
{
    if (m_dragOffset && (event->buttons() & Qt::LeftButton))
        move(event->globalPosition().toPoint() - *m_dragOffset);
}

void RecordingPanel::mouseReleaseEvent(QMouseEvent *)
{
    m_dragOffset.reset();
}
