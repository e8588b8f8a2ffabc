#pragma once

#include <QFileDialog>

class QLineEdit;

// Where to save a recording, with an optional automatic stop time under the file list. Our own
// dialog rather than the system's, since the system's cannot carry the extra field.
class RecordingSaveDialog : public QFileDialog
{
    Q_OBJECT

public:
    RecordingSaveDialog(const QString &proposedName, QWidget *parent);

    QLineEdit *stopAfterField() const { return m_stopAfter; }
    // The chosen file, once accepted.
    QString chosenPath() const;
    QString stopAfterText() const;

private:
    QWidget *makeAccessory();

    QLineEdit *m_stopAfter = nullptr;
};
