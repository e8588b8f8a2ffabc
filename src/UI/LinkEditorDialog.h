#pragma once

#include "Playlist/LocalM3UStore.h"
#include "Playlist/PlaylistEntry.h"

#include <QDialog>

#include <optional>

class QLabel;
class QLineEdit;
class QPushButton;

// The sheet that adds a saved link or edits one: name, address, logo (typed, or chosen from the
// disk), country code and category. Save refuses a missing name and an address that is not http
// or https, saying why, and otherwise hands the cleaned fields over.
class LinkEditorDialog : public QDialog
{
    Q_OBJECT

public:
    // editing: the link being edited, or nothing to add a new one.
    explicit LinkEditorDialog(const std::optional<PlaylistEntry> &editing,
                              QWidget *parent = nullptr);

    QLineEdit *nameField() const { return m_name; }
    QLineEdit *urlField() const { return m_url; }
    QLineEdit *logoField() const { return m_logo; }
    QLineEdit *countryField() const { return m_country; }
    QLineEdit *categoryField() const { return m_category; }
    QPushButton *chooseLogoButton() const { return m_chooseLogo; }
    QPushButton *removeLogoButton() const { return m_removeLogo; }
    QPushButton *saveButton() const { return m_save; }
    // Why Save was refused; empty while nothing was refused.
    QString refusal() const;

Q_SIGNALS:
    void saved(const LocalLinkFields &fields);

private:
    void chooseLogoFile();
    void trySave();
    void refreshLogoButtons();

    QLineEdit *m_name;
    QLineEdit *m_url;
    QLineEdit *m_logo;
    QLineEdit *m_country;
    QLineEdit *m_category;
    QPushButton *m_chooseLogo;
    QPushButton *m_removeLogo;
    QPushButton *m_save;
    QLabel *m_refusal;
};
