#include "UI/AddressField.h"

#include <QDropEvent>
#include <QMimeData>

QList<QUrl> AddressField::droppedFiles(const QMimeData *data)
{
    QList<QUrl> files;
    if (data->hasUrls())
        for (const QUrl &url : data->urls())
            if (url.isLocalFile())
                files.append(url);
    return files;
}

namespace {

// A dropped web link, from a browser's address (uri-list) or as plain text.
QString droppedLink(const QMimeData *data)
{
    if (data->hasUrls())
        for (const QUrl &url : data->urls())
            if (!url.isLocalFile())
                return url.toString();
    return data->hasText() ? data->text() : QString();
}

} // namespace

AddressField::AddressField(QWidget *parent) : QLineEdit(parent)
{
    setObjectName(QStringLiteral("address"));
    setAcceptDrops(true);
}

void AddressField::dragEnterEvent(QDragEnterEvent *event)
{
    if (!droppedFiles(event->mimeData()).isEmpty() || !droppedLink(event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void AddressField::dragMoveEvent(QDragMoveEvent *event)
{
    event->acceptProposedAction();
}

void AddressField::dropEvent(QDropEvent *event)
{
    if (const QList<QUrl> files = droppedFiles(event->mimeData()); !files.isEmpty()) {
        event->acceptProposedAction();
        Q_EMIT filesDropped(files);
        return;
    }
    const QString link = droppedLink(event->mimeData());
    if (link.isEmpty())
        return;
    event->acceptProposedAction();
    // The field's change handling cleans it and opens it, as if it had been pasted.
    setText(link);
    setFocus(Qt::OtherFocusReason);
}
