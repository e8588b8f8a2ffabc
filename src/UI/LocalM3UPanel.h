#pragma once

#include "UI/ChannelListSection.h"

#include <QWidget>

class ChannelLogoLoader;
class ContentState;
class LocalM3UActions;
class PlayerModel;
class QLabel;
class QPushButton;
class QToolButton;
struct PlaylistEntry;

// The sidebar's panel of saved links: add, export, clear and import, search and filters, and
// the links with play, edit and delete. What needs the user's answer (the link editor, the
// confirmations, the file choice) is asked by the window.
class LocalM3UPanel : public QWidget
{
    Q_OBJECT

public:
    LocalM3UPanel(PlayerModel &model, ContentState &state, LocalM3UActions &localM3U,
                  ChannelLogoLoader &logos, QWidget *parent = nullptr);

    QToolButton *addButton() const { return m_add; }
    QPushButton *exportButton() const { return m_export; }
    QPushButton *clearButton() const { return m_clear; }
    QPushButton *fileButton() const { return m_file; }
    QPushButton *restoreButton() const { return m_restore; }
    ChannelFilterBar *filters() const { return m_section->filters(); }
    ChannelListView *linkList() const { return m_section->list(); }
    QLabel *emptyText() const { return m_section->emptyText(); }

Q_SIGNALS:
    void addRequested();
    void editRequested(const PlaylistEntry &entry);
    void deleteRequested(const PlaylistEntry &entry);
    void clearRequested();
    void exportRequested();
    void importRequested();

private:
    void refresh();

    LocalM3UActions &m_localM3U;
    QToolButton *m_add;
    QPushButton *m_export;
    QPushButton *m_clear;
    QPushButton *m_file;
    QPushButton *m_restore;
    ChannelListSection *m_section;
};
