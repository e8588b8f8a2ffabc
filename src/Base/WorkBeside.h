#pragma once

#include "Base/BackgroundPriority.h"

#include <QtGlobal>

#include <system_error>
#include <thread>

// Runs besideWork on a thread of its own (below this one) and ownWork on this thread at the same
// time, and returns when both are done: the second core of a machine takes half of a long task
// that the first would otherwise do alone. Without a thread to be had (a process limit), the two
// run one after the other.
template <typename BesideWork, typename OwnWork>
void runBeside(BesideWork &&besideWork, OwnWork &&ownWork)
{
    std::thread helper;
    try {
        helper = std::thread([&besideWork] {
            BackgroundPriority::lowerCurrentThread();
            besideWork();
        });
    } catch (const std::system_error &) {
        besideWork();
    }
    ownWork();
    if (helper.joinable())
        helper.join();
}

// Runs work(part) for each of the parts (one or two): the second on a helper thread while this
// thread does the first.
template <typename Work>
void shareParts(qsizetype parts, Work &&work)
{
    if (parts == 1)
        return work(0);
    runBeside([&work] { work(1); }, [&work] { work(0); });
}
