#include "Recording/RecordingSaveDialog.h"

#include "Recording/RecordingTexts.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QStandardPaths>
#include <QVBoxLayout>

namespace {

constexpr int fieldWidth = 190;
constexpr int accessorySpacing = 5;
constexpr int accessoryInset = 8;
constexpr int labelPointSize = 12;
constexpr int examplesPointSize = 10;

} // namespace

RecordingSaveDialog::RecordingSaveDialog(const QString &proposedName, QWidget *parent)
    : QFileDialog(parent, RecordingTexts::saveTitle.toString())
{
    setOption(QFileDialog::DontUseNativeDialog);
    setAcceptMode(QFileDialog::AcceptSave);
    setFileMode(QFileDialog::AnyFile);
    setNameFilter(RecordingTexts::mp4Filter.toString());
    setDefaultSuffix(RecordingTexts::mp4Suffix.toString());
    const QStringList movies = QStandardPaths::standardLocations(QStandardPaths::MoviesLocation);
    if (!movies.isEmpty())
        setDirectory(movies.first());
    selectFile(proposedName);
    setWindowModality(Qt::WindowModal);
    // Under the file list, across the dialog's whole width.
    if (auto *grid = qobject_cast<QGridLayout *>(layout()))
        grid->addWidget(makeAccessory(), grid->rowCount(), 0, 1, grid->columnCount());
}

QWidget *RecordingSaveDialog::makeAccessory()
{
    auto *accessory = new QWidget(this);
    auto *stack = new QVBoxLayout(accessory);
    stack->setSpacing(accessorySpacing);
    stack->setContentsMargins(0, accessoryInset, 0, accessoryInset);

    auto *label = new QLabel(RecordingTexts::stopAfterLabel.toString(), accessory);
    QFont labelFont = label->font();
    labelFont.setPointSize(labelPointSize);
    labelFont.setWeight(QFont::Medium);
    label->setFont(labelFont);

    m_stopAfter = new QLineEdit(accessory);
    m_stopAfter->setFixedWidth(fieldWidth);
    m_stopAfter->setPlaceholderText(RecordingTexts::stopAfterPlaceholder.toString());
    m_stopAfter->setToolTip(RecordingTexts::stopAfterHelp.toString());
    label->setBuddy(m_stopAfter);

    auto *examples = new QLabel(RecordingTexts::stopAfterExamples.toString(), accessory);
    QFont examplesFont = examples->font();
    examplesFont.setPointSize(examplesPointSize);
    examples->setFont(examplesFont);
    examples->setForegroundRole(QPalette::PlaceholderText);

    stack->addWidget(label, 0, Qt::AlignLeft);
    stack->addWidget(m_stopAfter, 0, Qt::AlignLeft);
    stack->addWidget(examples, 0, Qt::AlignLeft);
    return accessory;
}

QString RecordingSaveDialog::chosenPath() const
{
    const QStringList files = selectedFiles();
    return files.isEmpty() ? QString() : files.first();
}

QString RecordingSaveDialog::stopAfterText() const
{
    return m_stopAfter->text();
}
