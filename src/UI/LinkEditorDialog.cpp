#include "UI/LinkEditorDialog.h"

#include "Base/OptionalText.h"

#include "UI/WindowTexts.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

QLineEdit *field(const QString &placeholder, const QString &text, QWidget *parent)
{
    auto *edit = new QLineEdit(text, parent);
    edit->setPlaceholderText(placeholder);
    edit->setMinimumWidth(320);
    return edit;
}

// A typed logo may be an address or a path on this computer.
std::optional<WebAddress> logoAddress(const QString &text)
{
    const std::optional<QString> trimmed = trimmedText(text);
    if (!trimmed)
        return std::nullopt;
    if (QDir::isAbsolutePath(*trimmed))
        return WebAddress::fromLocalFile(QDir::cleanPath(*trimmed));
    const std::optional<WebAddress> url = WebAddress::fromText(*trimmed);
    return url && url->hasScheme() ? url : std::nullopt;
}

} // namespace

LinkEditorDialog::LinkEditorDialog(const std::optional<PlaylistEntry> &editing, QWidget *parent)
    : QDialog(parent)
{
    setObjectName(u"linkEditor"_s);
    setWindowTitle(editing ? WindowTexts::editLinkTitle.toString()
                           : WindowTexts::addLinkTitle.toString());
    setWindowModality(Qt::WindowModal);
    auto *column = new QVBoxLayout(this);
    auto *title = new QLabel(windowTitle(), this);
    title->setObjectName(u"sheetTitle"_s);
    column->addWidget(title);

    m_name = field(WindowTexts::nameField.toString(), editing ? editing->name : QString(), this);
    m_url =
        field(WindowTexts::urlField.toString(), editing ? editing->url.text() : QString(), this);
    m_logo = field(WindowTexts::logoField.toString(),
                   editing && editing->logoURL ? editing->logoURL->text() : QString(), this);
    m_country = field(WindowTexts::countryField.toString(),
                      editing ? editing->countryCode.value_or(QString()) : QString(), this);
    m_category = field(WindowTexts::categoryField.toString(),
                       editing ? editing->groupTitle.value_or(QString()) : QString(), this);
    for (QLineEdit *edit : {m_name, m_url, m_logo})
        column->addWidget(edit);
    auto *logoButtons = new QHBoxLayout;
    m_chooseLogo = new QPushButton(WindowTexts::chooseLogoFile.toString(), this);
    m_removeLogo = new QPushButton(WindowTexts::removeLogo.toString(), this);
    logoButtons->addWidget(m_chooseLogo);
    logoButtons->addWidget(m_removeLogo);
    logoButtons->addStretch();
    column->addLayout(logoButtons);
    column->addWidget(m_country);
    column->addWidget(m_category);

    m_refusal = new QLabel(this);
    m_refusal->setObjectName(u"refusal"_s);
    m_refusal->setWordWrap(true);
    m_refusal->hide();
    column->addWidget(m_refusal);

    auto *buttons = new QDialogButtonBox(this);
    buttons->addButton(WindowTexts::cancel.toString(), QDialogButtonBox::RejectRole);
    m_save = buttons->addButton(WindowTexts::save.toString(), QDialogButtonBox::AcceptRole);
    m_save->setDefault(true);
    column->addWidget(buttons);

    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_save, &QPushButton::clicked, this, &LinkEditorDialog::trySave);
    connect(m_chooseLogo, &QPushButton::clicked, this, &LinkEditorDialog::chooseLogoFile);
    connect(m_removeLogo, &QPushButton::clicked, m_logo, &QLineEdit::clear);
    connect(m_logo, &QLineEdit::textChanged, this, &LinkEditorDialog::refreshLogoButtons);
    refreshLogoButtons();
}

QString LinkEditorDialog::refusal() const
{
    return m_refusal->isHidden() ? QString() : m_refusal->text();
}

void LinkEditorDialog::chooseLogoFile()
{
    auto *dialog = new QFileDialog(this, WindowTexts::chooseLogoTitle.toString());
    dialog->setObjectName(u"logoChooser"_s);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilter(u"Images (*.png *.jpg *.jpeg *.gif *.bmp *.webp *.svg)"_s);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString &path) {
        m_logo->setText(WebAddress::fromLocalFile(QDir::cleanPath(path)).text());
    });
    dialog->open();
}

void LinkEditorDialog::refreshLogoButtons()
{
    m_removeLogo->setEnabled(!m_logo->text().trimmed().isEmpty());
}

void LinkEditorDialog::trySave()
{
    const auto refuse = [this](QStringView why) {
        m_refusal->setText(why.toString());
        m_refusal->show();
    };
    if (m_name->text().trimmed().isEmpty())
        return refuse(WindowTexts::nameRequired);
    const std::optional<WebAddress> url = WebAddress::fromText(m_url->text().trimmed());
    if (!url || !url->isWebAddress() || !url->host())
        return refuse(WindowTexts::validURLRequired);
    m_refusal->hide();
    std::optional<QString> country = trimmedText(m_country->text());
    if (country)
        *country = country->toUpper();
    Q_EMIT saved(LocalLinkFields{m_name->text().trimmed(), *url, logoAddress(m_logo->text()),
                                 country, trimmedText(m_category->text())});
    accept();
}
