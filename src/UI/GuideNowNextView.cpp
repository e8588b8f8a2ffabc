#include "UI/GuideNowNextView.h"

#include "Player/PlayerModel.h"
#include "Player/ProgrammeGuide.h"
#include "UI/GuideTimeText.h"
#include "UI/WindowTexts.h"

#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

GuideNowNextView::GuideNowNextView(PlayerModel &model, QWidget *parent)
    : QWidget(parent), m_model(model), m_now(new QLabel(this)), m_next(new QLabel(this))
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    for (QLabel *label : {m_now, m_next}) {
        label->setTextFormat(Qt::PlainText);
        // A long title is cut by the width, never widens the sidebar.
        label->setMinimumWidth(1);
        column->addWidget(label);
    }
    m_next->setObjectName(u"secondaryText"_s);
    ProgrammeGuide &guide = m_model.guide();
    connect(&m_model, &PlayerModel::currentURLChanged, this, &GuideNowNextView::findPlayingChannel);
    connect(&m_model, &PlayerModel::playlistChanged, this, &GuideNowNextView::findPlayingChannel);
    connect(&guide, &ProgrammeGuide::scheduleChanged, this, &GuideNowNextView::refresh);
    connect(&guide, &ProgrammeGuide::clockAdvanced, this, &GuideNowNextView::refresh);
    findPlayingChannel();
}

void GuideNowNextView::findPlayingChannel()
{
    const PlaylistEntry *playing = m_model.playingEntry();
    m_channel = playing ? std::optional(playing->id) : std::nullopt;
    refresh();
}

void GuideNowNextView::refresh()
{
    const GuideSchedule &schedule = m_model.guide().schedule();
    const qint64 time = ProgrammeGuide::now();
    const std::optional<GuideProgramme> now =
        m_channel ? schedule.onAt(*m_channel, time) : std::nullopt;
    const std::optional<GuideProgramme> next =
        m_channel ? schedule.nextAfter(*m_channel, time) : std::nullopt;
    setVisible(now || next);
    const auto line = [](QStringView label, const QString &when, const QString &title) {
        return label.toString() + u"  "_s + when + u"  "_s + title;
    };
    m_now->setText(now ? line(WindowTexts::guideNow, GuideTimeText::span(*now), now->title)
                       : QString());
    m_now->setVisible(now.has_value());
    m_next->setText(
        next ? line(WindowTexts::guideNext, GuideTimeText::time(next->start), next->title)
             : QString());
    m_next->setVisible(next.has_value());
}
