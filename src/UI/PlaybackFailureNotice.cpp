#include "UI/PlaybackFailureNotice.h"

#include "Base/SymbolIcons.h"
#include "UI/WindowTexts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

PlaybackFailureNotice::PlaybackFailureNotice(QWidget *parent)
    : QFrame(parent), m_text(new QLabel(this)), m_dismiss(new QToolButton(this))
{
    setObjectName(QStringLiteral("playbackFailure"));
    setAttribute(Qt::WA_StyledBackground);
    m_text->setWordWrap(true);
    m_dismiss->setIcon(SymbolIcons::icon(u"xmark.circle"));
    m_dismiss->setToolTip(WindowTexts::dismissHelp.toString());
    m_dismiss->setAutoRaise(true);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(12, 8, 6, 8);
    row->addWidget(m_text, 1);
    row->addWidget(m_dismiss, 0, Qt::AlignTop);
    connect(m_dismiss, &QToolButton::clicked, this, &PlaybackFailureNotice::dismissed);
}

void PlaybackFailureNotice::setText(const QString &text)
{
    m_text->setText(text);
}

QString PlaybackFailureNotice::text() const
{
    return m_text->text();
}
