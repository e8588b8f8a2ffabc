#pragma once

#include <QUuid>
#include <QWidget>

#include <optional>

class PlayerModel;
class QLabel;

// What is on now and next on the channel playing, with times in the user's locale, under the
// channel list. It follows the guide's clock, so it turns over at the programme boundary; it is
// hidden when the channel playing has no guide.
class GuideNowNextView : public QWidget
{
    Q_OBJECT

public:
    explicit GuideNowNextView(PlayerModel &model, QWidget *parent = nullptr);

    QLabel *nowLabel() const { return m_now; }
    QLabel *nextLabel() const { return m_next; }

private:
    void findPlayingChannel();
    void refresh();

    PlayerModel &m_model;
    std::optional<QUuid> m_channel;
    QLabel *m_now;
    QLabel *m_next;
};
