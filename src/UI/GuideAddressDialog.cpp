#include "UI/GuideAddressDialog.h"

#include "Player/ProgrammeGuide.h"
#include "UI/WindowTexts.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

GuideAddressDialog::GuideAddressDialog(ProgrammeGuide &guide, QWidget *parent)
    : QDialog(parent), m_guide(guide), m_field(new QLineEdit(this)), m_refusal(new QLabel(this))
{
    setWindowTitle(WindowTexts::guideAddressTitle.toString());
    auto *column = new QVBoxLayout(this);
    auto *prompt = new QLabel(WindowTexts::guideAddressPrompt.toString(), this);
    prompt->setWordWrap(true);
    column->addWidget(prompt);
    m_field->setText(guide.addressText());
    m_field->setPlaceholderText(QStringLiteral("https://"));
    m_field->setMinimumWidth(380);
    column->addWidget(m_field);
    m_refusal->setObjectName(QStringLiteral("refusalText"));
    m_refusal->hide();
    column->addWidget(m_refusal);
    auto *buttons = new QDialogButtonBox(this);
    m_save = buttons->addButton(WindowTexts::ok.toString(), QDialogButtonBox::AcceptRole);
    buttons->addButton(WindowTexts::cancel.toString(), QDialogButtonBox::RejectRole);
    m_save->setDefault(true);
    column->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &GuideAddressDialog::save);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

QString GuideAddressDialog::refusal() const
{
    return m_refusal->isHidden() ? QString() : m_refusal->text();
}

void GuideAddressDialog::save()
{
    if (!m_guide.setAddressText(m_field->text())) {
        m_refusal->setText(WindowTexts::guideAddressRefused.toString());
        m_refusal->show();
        return;
    }
    accept();
}
