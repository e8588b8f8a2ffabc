#pragma once

#include <QDialog>

class ProgrammeGuide;
class QLabel;
class QLineEdit;
class QPushButton;

// Sets the user's own programme guide address: one field, checked when it is saved; an empty
// field clears it. The guide is read again at once.
class GuideAddressDialog : public QDialog
{
    Q_OBJECT

public:
    GuideAddressDialog(ProgrammeGuide &guide, QWidget *parent = nullptr);

    QLineEdit *addressField() const { return m_field; }
    QPushButton *saveButton() const { return m_save; }
    QString refusal() const;

private:
    void save();

    ProgrammeGuide &m_guide;
    QLineEdit *m_field;
    QLabel *m_refusal;
    QPushButton *m_save;
};
