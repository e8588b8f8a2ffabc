#include "UI/PlayerControlBar.h"

#include "Base/SymbolIcons.h"
#include "Player/PlayerModel.h"
#include "UI/ContentState.h"
#include "UI/PlayerTimeText.h"
#include "UI/WindowTexts.h"

#include <QApplication>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QProgressBar>
#include <QSlider>
#include <QStackedWidget>
#include <QToolButton>

#include <algorithm>
#include <cmath>

namespace {

constexpr int iconSize = 16;
// The seek slider counts milliseconds, the volume slider hundredths.
constexpr double sliderUnitsPerSecond = 1000;
constexpr int volumeSteps = 100;
// Narrower than this, the volume slider gives its room to the seek slider (mute stays).
constexpr int volumeSliderMinimumBarWidth = 620;

// The button shows the same symbols as the entries, but a portrait outline for the normal mode.
QStringView buttonSymbol(PortraitDisplayMode mode)
{
    return mode == PortraitDisplayMode::normal ? QStringView(u"rectangle.portrait")
                                               : PortraitDisplayModes::menuSymbol(mode);
}

} // namespace

PlayerControlBar::PlayerControlBar(PlayerModel &model, ContentState &state, QWidget *parent)
    : QWidget(parent), m_model(model), m_state(state)
{
    setObjectName(QStringLiteral("PlayerControlBar"));
    setAttribute(Qt::WA_StyledBackground);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(10, 6, 10, 6);
    row->setSpacing(4);

    QToolButton *back = addButton(WindowTexts::skipBackHelp.toString());
    back->setIcon(SymbolIcons::icon(u"backward.fill"));
    connect(back, &QToolButton::clicked, this, [this] { m_model.skip(-10); });
    m_playPause = addButton(QString());
    m_playPause->setObjectName(QStringLiteral("prominent"));
    connect(m_playPause, &QToolButton::clicked, &m_model, &PlayerModel::togglePlayback);
    QToolButton *stop = addButton(WindowTexts::stopHelp.toString());
    stop->setIcon(SymbolIcons::icon(u"stop.fill"));
    connect(stop, &QToolButton::clicked, &m_model, &PlayerModel::stop);
    QToolButton *forward = addButton(WindowTexts::skipForwardHelp.toString());
    forward->setIcon(SymbolIcons::icon(u"forward.fill"));
    connect(forward, &QToolButton::clicked, this, [this] { m_model.skip(10); });

    auto *divider = new QFrame(this);
    divider->setObjectName(QStringLiteral("divider"));
    divider->setFixedSize(1, iconSize + 4);
    layout()->addWidget(divider);

    QToolButton *sidebar = addButton(WindowTexts::sidebarHelp.toString());
    sidebar->setIcon(SymbolIcons::icon(u"list.bullet"));
    connect(sidebar, &QToolButton::clicked, this,
            [this] { m_state.setShowSidebar(!m_state.showSidebar()); });

    m_currentTime = new QLabel(this);
    m_seek = new QSlider(Qt::Horizontal, this);
    m_seek->setObjectName(QStringLiteral("seek"));
    m_remainingTime = new QLabel(this);
    for (QLabel *label : {m_currentTime, m_remainingTime}) {
        label->setObjectName(QStringLiteral("time"));
        label->setMinimumWidth(label->fontMetrics().horizontalAdvance(QStringLiteral("000:00")));
        label->setAlignment(Qt::AlignCenter);
    }
    row->addWidget(m_currentTime);
    row->addWidget(m_seek, 1);
    row->addWidget(m_remainingTime);
    connect(m_seek, &QSlider::sliderPressed, this, [this] {
        m_seeking = true;
        m_seekValue = m_seek->value() / sliderUnitsPerSecond;
    });
    connect(m_seek, &QSlider::sliderMoved, this, [this](int value) {
        m_seekValue = value / sliderUnitsPerSecond;
        refreshTime();
    });
    connect(m_seek, &QSlider::sliderReleased, this, [this] {
        m_seeking = false;
        m_model.seek(m_seekValue);
        refreshTime();
    });

    m_mute = addButton(WindowTexts::muteHelp.toString());
    connect(m_mute, &QToolButton::clicked, &m_model, &PlayerModel::toggleMute);
    m_volume = new QSlider(Qt::Horizontal, this);
    m_volume->setRange(0, volumeSteps);
    m_volume->setFixedWidth(84);
    row->addWidget(m_volume);
    connect(m_volume, &QSlider::valueChanged, this, [this](int value) {
        // Only the user's changes: the model's own changes are shown without echo.
        if (qRound(m_model.volume() * volumeSteps) != value)
            m_model.setVolume(double(value) / volumeSteps);
    });

    buildDisplayModeMenu();
    buildRecordingControl();

    QToolButton *fullScreen = addButton(WindowTexts::fullScreenHelp.toString());
    fullScreen->setIcon(SymbolIcons::icon(u"arrow.up.left.and.arrow.down.right"));
    connect(fullScreen, &QToolButton::clicked, this, &PlayerControlBar::toggleKeyWindowFullScreen);

    connect(&m_model, &PlayerModel::isPlayingChanged, this, &PlayerControlBar::refreshTransport);
    connect(&m_model, &PlayerModel::currentTimeChanged, this, &PlayerControlBar::refreshTime);
    connect(&m_model, &PlayerModel::durationChanged, this, &PlayerControlBar::refreshTime);
    connect(&m_model, &PlayerModel::volumeChanged, this, &PlayerControlBar::refreshVolume);
    connect(&m_model, &PlayerModel::isMutedChanged, this, &PlayerControlBar::refreshVolume);
    connect(&m_state, &ContentState::portraitModeChanged, this,
            &PlayerControlBar::refreshDisplayMode);
    refreshTransport();
    refreshTime();
    refreshVolume();
    refreshDisplayMode();
}

void PlayerControlBar::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_volume->setVisible(width() >= volumeSliderMinimumBarWidth);
}

QToolButton *PlayerControlBar::addButton(const QString &help)
{
    auto *button = new QToolButton(this);
    button->setToolTip(help);
    button->setAutoRaise(true);
    button->setIconSize(QSize(iconSize, iconSize));
    button->setFocusPolicy(Qt::NoFocus);
    layout()->addWidget(button);
    return button;
}

void PlayerControlBar::buildDisplayModeMenu()
{
    m_displayModeButton = addButton(WindowTexts::displayModeHelp.toString());
    m_displayModes = new QMenu(m_displayModeButton);
    m_displayModeButton->setMenu(m_displayModes);
    m_displayModeButton->setPopupMode(QToolButton::InstantPopup);
    for (const PortraitDisplayMode mode : PortraitDisplayModes::all) {
        QAction *entry = m_displayModes->addAction(PortraitDisplayModes::rawValue(mode).toString());
        entry->setData(int(mode));
        connect(entry, &QAction::triggered, this,
                [this, mode] { m_state.selectDisplayMode(mode); });
    }
}

void PlayerControlBar::buildRecordingControl()
{
    m_recording = new QStackedWidget(this);
    m_recordButton = new QToolButton(m_recording);
    m_recordButton->setToolTip(WindowTexts::recordingQualityHelp.toString());
    m_recordButton->setIcon(SymbolIcons::icon(u"record.circle"));
    m_recordButton->setAutoRaise(true);
    m_recordButton->setPopupMode(QToolButton::InstantPopup);
    auto *qualities = new QMenu(m_recordButton);
    connect(qualities->addAction(SymbolIcons::icon(u"record.circle"),
                                 WindowTexts::normalRecording.toString()),
            &QAction::triggered, this,
            [this] { Q_EMIT recordingRequested(PlayerRecordingQuality::normal); });
    connect(qualities->addAction(SymbolIcons::icon(u"record.circle.fill"),
                                 WindowTexts::hdRecording.toString()),
            &QAction::triggered, this,
            [this] { Q_EMIT recordingRequested(PlayerRecordingQuality::hd); });
    m_recordButton->setMenu(qualities);
    auto *busy = new QProgressBar(m_recording);
    busy->setRange(0, 0);
    busy->setTextVisible(false);
    busy->setMaximumWidth(24);
    m_stopRecordingButton = new QToolButton(m_recording);
    m_stopRecordingButton->setToolTip(WindowTexts::stopRecordingHelp.toString());
    m_stopRecordingButton->setIcon(SymbolIcons::icon(u"stop.fill", QColor(255, 69, 58)));
    m_stopRecordingButton->setAutoRaise(true);
    connect(m_stopRecordingButton, &QToolButton::clicked, this,
            &PlayerControlBar::stopRecordingRequested);
    for (QWidget *page :
         std::initializer_list<QWidget *>{m_recordButton, busy, m_stopRecordingButton})
        m_recording->addWidget(page);
    m_recording->setFixedSize(m_recordButton->sizeHint());
    layout()->addWidget(m_recording);
    setRecordingState(PlayerRecordingState::idle);
    setRecordingAvailable(false);
}

void PlayerControlBar::setRecordingState(PlayerRecordingState state)
{
    if (state == PlayerRecordingState::preparing)
        m_recording->setCurrentIndex(1);
    else
        m_recording->setCurrentIndex(isRecording(state) ? 2 : 0);
}

void PlayerControlBar::setRecordingAvailable(bool available)
{
    m_recording->setEnabled(available);
}

void PlayerControlBar::refreshTransport()
{
    const bool playing = m_model.isPlaying();
    m_playPause->setIcon(SymbolIcons::icon(playing ? u"pause.fill" : u"play.fill"));
    m_playPause->setToolTip(playing ? WindowTexts::pauseHelp.toString()
                                    : WindowTexts::play.toString());
}

void PlayerControlBar::refreshTime()
{
    const double duration = m_model.duration();
    const double upper = std::max(std::isfinite(duration) ? duration : 0.0, 1.0);
    m_seek->setRange(0, int(std::min(upper * sliderUnitsPerSecond, double(INT_MAX))));
    const double shown = m_seeking ? m_seekValue : m_model.currentTime();
    if (!m_seeking)
        m_seek->setValue(int(std::clamp(shown * sliderUnitsPerSecond, 0.0, double(INT_MAX))));
    m_currentTime->setText(PlayerTimeText::time(shown));
    m_remainingTime->setText(PlayerTimeText::remaining(duration, shown));
}

QString PlayerControlBar::currentTimeText() const
{
    return m_currentTime->text();
}

QString PlayerControlBar::remainingTimeText() const
{
    return m_remainingTime->text();
}

void PlayerControlBar::refreshVolume()
{
    m_mute->setIcon(
        SymbolIcons::icon(m_model.isMuted() ? u"speaker.slash.fill" : u"speaker.wave.2.fill"));
    const QSignalBlocker quiet(m_volume);
    m_volume->setValue(qRound(m_model.volume() * volumeSteps));
}

void PlayerControlBar::refreshDisplayMode()
{
    const PortraitDisplayMode current = m_state.portraitMode();
    m_displayModeButton->setIcon(SymbolIcons::icon(buttonSymbol(current)));
    for (QAction *entry : m_displayModes->actions()) {
        const auto mode = PortraitDisplayMode(entry->data().toInt());
        entry->setIcon(SymbolIcons::icon(mode == current ? QStringView(u"checkmark.circle.fill")
                                                         : PortraitDisplayModes::menuSymbol(mode)));
    }
}

void PlayerControlBar::toggleKeyWindowFullScreen()
{
    QWidget *window = QApplication::activeWindow();
    if (!window)
        return;
    window->setWindowState(window->windowState() ^ Qt::WindowFullScreen);
}
