#pragma once

#include "Base/BackgroundPriority.h"

#include <QList>
#include <QThread>
#include <QThreadPool>

#include <algorithm>
#include <memory>
#include <type_traits>
#include <utility>

// The thread that frees long lists and schedules: a pool of its own, so that its pauses never
// hold up the work of the global pool (parsing and indexing the list that replaces the one being
// freed). It is destroyed at exit once what was handed to it is freed.
inline QThreadPool &stepwiseReleasePool()
{
    struct OneThreadPool : QThreadPool
    {
        OneThreadPool() { setMaxThreadCount(1); }
    };
    static OneThreadPool pool;
    return pool;
}

// How many elements (list entries, guide programmes) one step of releaseInSteps frees.
inline constexpr qsizetype releaseStep = 2048;

// Frees a large value on the release thread in steps, with a pause after each. Freeing
// hundreds of thousands of strings at full speed slowed the window's own work several times
// over while it ran (the repaint right after a new list's address was entered took 12-16 ms
// instead of 3, in about one load of thirty); in steps, 100,000 channels are still gone within
// about a tenth of a second, and the window does not notice. freeStep(doomed) frees one step's
// worth (about releaseStep elements) and returns whether anything is left.
template <typename T, typename FreeStep>
void releaseInSteps(T &&doomed, FreeStep freeStep)
{
    stepwiseReleasePool().start([doomed = std::forward<T>(doomed), freeStep]() mutable {
        BackgroundPriority::lowerCurrentThread();
        while (freeStep(doomed))
            QThread::msleep(1);
        doomed = std::decay_t<T>();
    });
}

// Lets go of a list on a worker thread when the caller holds its last reference. Freeing the
// channels of a long playlist one string at a time takes tens of milliseconds, longer than a
// frame, so the main thread hands that work away; a list someone else still shares only loses
// a reference, at once. Short lists are freed in place, where that is cheaper than a hand-over.
template <typename T>
void releaseInBackground(QList<T> &&list)
{
    constexpr qsizetype inPlaceLimit = 4096;
    if (list.size() < inPlaceLimit || !list.isDetached()) {
        list = {};
        return;
    }
    releaseInSteps(std::move(list), [](QList<T> &doomed) {
        doomed.resize(std::max<qsizetype>(doomed.size() - releaseStep, 0));
        return !doomed.isEmpty();
    });
}

// The same for an object held by a shared pointer, such as an index built over a long list: it
// goes on a worker thread when the caller held the last reference.
template <typename T>
void releaseInBackground(std::shared_ptr<T> &&object)
{
    if (!object || object.use_count() > 1) {
        object.reset();
        return;
    }
    QThreadPool::globalInstance()->start([doomed = std::move(object)]() mutable {
        BackgroundPriority::lowerCurrentThread();
        doomed.reset();
    });
}
