#pragma once

#include <QLineEdit>
#include <QList>
#include <QUrl>

class QMimeData;

// The address field. A link dropped on it (as text or as a web address) replaces the field's text
// instead of being inserted where the mouse let go; dropped files are handed on to be played.
class AddressField : public QLineEdit
{
    Q_OBJECT

public:
    explicit AddressField(QWidget *parent = nullptr);

    // The files on this computer among dropped data.
    static QList<QUrl> droppedFiles(const QMimeData *data);

Q_SIGNALS:
    void filesDropped(const QList<QUrl> &files);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
};
