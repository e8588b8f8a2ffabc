#include "UI/GuideDayDialog.h"

#include "Player/PlayerModel.h"
#include "Player/ProgrammeGuide.h"
#include "UI/GuideTimeText.h"
#include "UI/WindowTexts.h"

#include <QDateTime>
#include <QListWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// The end of the local day the time falls in.
qint64 endOfDay(qint64 time)
{
    const QDateTime local = QDateTime::fromMSecsSinceEpoch(time);
    return QDateTime(local.date().addDays(1), QTime(0, 0)).toMSecsSinceEpoch();
}
} // namespace

GuideDayDialog::GuideDayDialog(PlayerModel &model, const PlaylistEntry &channel, QWidget *parent)
    : QDialog(parent), m_model(model), m_channel(channel), m_list(new QListWidget(this))
{
    setWindowTitle(WindowTexts::guideViewTitle.toString().arg(channel.name));
    setAttribute(Qt::WA_DeleteOnClose);
    setModal(false);
    resize(420, 480);
    auto *column = new QVBoxLayout(this);
    column->addWidget(m_list);
    m_list->setWordWrap(true);
    m_list->setSelectionMode(QAbstractItemView::NoSelection);
    connect(&m_model.guide(), &ProgrammeGuide::scheduleChanged, this, &GuideDayDialog::refresh);
    connect(&m_model.guide(), &ProgrammeGuide::clockAdvanced, this, &GuideDayDialog::refresh);
    refresh();
}

void GuideDayDialog::refresh()
{
    m_list->clear();
    const qint64 time = ProgrammeGuide::now();
    const QList<GuideProgramme> programmes =
        m_model.guide().schedule().between(m_channel.id, time, endOfDay(time));
    for (const GuideProgramme &programme : programmes) {
        QString text = GuideTimeText::span(programme) + u"   "_s + programme.title;
        QStringList details;
        for (const QString &detail : {programme.subTitle, programme.category})
            if (!detail.isEmpty())
                details.append(detail);
        if (!details.isEmpty())
            text += u"\n"_s + details.join(u"  \u00b7  "_s);
        auto *item = new QListWidgetItem(text, m_list);
        item->setToolTip(programme.description);
        if (programme.isOnAt(time)) {
            QFont font = item->font();
            font.setBold(true);
            item->setFont(font);
        }
    }
    if (programmes.isEmpty())
        new QListWidgetItem(WindowTexts::guideNothingLeft.toString(), m_list);
}
