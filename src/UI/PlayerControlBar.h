#pragma once

#include "Recording/PlayerRecordingQuality.h"
#include "Recording/PlayerRecordingState.h"

#include <QWidget>

class ContentState;
class PlayerModel;
class QLabel;
class QMenu;
class QSlider;
class QStackedWidget;
class QToolButton;

// The row of transport and view controls under the picture. It reads the player's state and the
// window's, and turns clicks into their actions; the only state of its own is the seek slider's
// value while it is dragged.
class PlayerControlBar : public QWidget
{
    Q_OBJECT

public:
    PlayerControlBar(PlayerModel &model, ContentState &state, QWidget *parent = nullptr);

    // The recorder's state decides the recording control: a quality menu, a busy sign, or stop.
    void setRecordingState(PlayerRecordingState state);
    // Until a recorder is attached the recording control is shown but cannot be used.
    void setRecordingAvailable(bool available);

    QString currentTimeText() const;
    QString remainingTimeText() const;
    QSlider *seekSlider() const { return m_seek; }
    QSlider *volumeSlider() const { return m_volume; }
    QMenu *displayModeMenu() const { return m_displayModes; }
    QToolButton *displayModeButton() const { return m_displayModeButton; }

Q_SIGNALS:
    void recordingRequested(PlayerRecordingQuality quality);
    void stopRecordingRequested();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QToolButton *addButton(const QString &help);
    void buildDisplayModeMenu();
    void buildRecordingControl();
    void refreshTransport();
    void refreshTime();
    void refreshVolume();
    void refreshDisplayMode();
    static void toggleKeyWindowFullScreen();

    PlayerModel &m_model;
    ContentState &m_state;
    QToolButton *m_playPause;
    QToolButton *m_mute;
    QLabel *m_currentTime;
    QLabel *m_remainingTime;
    QSlider *m_seek;
    QSlider *m_volume;
    QToolButton *m_displayModeButton;
    QMenu *m_displayModes;
    QStackedWidget *m_recording;
    QToolButton *m_recordButton;
    QToolButton *m_stopRecordingButton;
    bool m_seeking = false;
    double m_seekValue = 0;
};
