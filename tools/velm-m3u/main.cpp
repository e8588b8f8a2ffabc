#include "HugePageHeap.h"
#include "M3uCommands.h"

#include <QCoreApplication>

int main(int argc, char **argv)
{
    HugePageHeap::restartWithHugePages(argv);
    // A core application gives QFile and the text codecs their usual environment; no event loop
    // runs.
    QCoreApplication application(argc, argv);
    return M3uCommands::run(QCoreApplication::arguments().mid(1));
}
