#include "App/VelmApplication.h"

#include <QFileOpenEvent>

VelmApplication::VelmApplication(int &argc, char **argv) : QApplication(argc, argv) {}

bool VelmApplication::event(QEvent *event)
{
    if (event->type() != QEvent::FileOpen)
        return QApplication::event(event);
    const QUrl url = static_cast<QFileOpenEvent *>(event)->url();
    const std::optional<WebAddress> address =
        url.isLocalFile() ? WebAddress::fromLocalFile(url.toLocalFile())
                          : WebAddress::fromText(url.toString(QUrl::FullyEncoded));
    if (address)
        Q_EMIT openRequested(*address);
    return true;
}
