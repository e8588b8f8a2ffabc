#include "M3uCommands.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

int main(int argc, char **argv)
{
    // A core application gives QFile and the text codecs their usual environment; no event loop
    // runs.
    QCoreApplication application(argc, argv);
    const int status = M3uCommands::run(QCoreApplication::arguments().mid(1));
    // What the command read is left to the system, which frees it at once at the end.
    std::fflush(stdout);
    std::fflush(stderr);
    std::_Exit(status);
}
