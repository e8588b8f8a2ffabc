#pragma once

#include <QStringList>

// The subcommands of velm-m3u. Each takes the arguments after its own name and returns the
// process exit status: 0 success, 1 an address that is not http or https (classify), 2 unusable
// input or arguments, 3 a playlist without a single playable address.
class M3uCommands
{
public:
    M3uCommands() = delete;

    static int run(const QStringList &arguments);

private:
    static int parse(const QStringList &arguments);
    static int classify(const QStringList &arguments);
    static int stats(const QStringList &arguments);
    static int guide(const QStringList &arguments);
};
