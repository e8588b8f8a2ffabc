#pragma once

#include "Base/BackgroundPriority.h"

#include <QList>
#include <QThread>
#include <QThreadPool>

#include <memory>
#include <utility>

// Destroys the value on a pool thread, below the main thread's priority.
template <typename T>
void destroyOnPool(T &&doomed)
{
    QThreadPool::globalInstance()->start([doomed = std::forward<T>(doomed)]() mutable {
        BackgroundPriority::lowerCurrentThread();
        doomed = T();
    });
}

// The thread that frees long lists: a pool of its own, so that its pauses never hold up the work
// of the global pool (parsing and indexing the list that replaces the one being freed). It is
// destroyed at exit once the lists handed to it are freed.
inline QThreadPool &listReleasePool()
{
    static QThreadPool pool;
    pool.setMaxThreadCount(1);
    return pool;
}

// Lets go of a list on a worker thread when the caller holds its last reference. Freeing the
// channels of a long playlist one string at a time takes tens of milliseconds, longer than a
// frame, so the main thread hands that work away; a list someone else still shares only loses
// a reference, at once. Short lists are freed in place, where that is cheaper than a hand-over.
//
// The worker frees a slice of the list at a time, with a pause after each. Freeing 300,000
// strings at full speed slowed the window's own work several times over while it ran (the
// repaint right after a new list's address was entered took 12-16 ms instead of 3 in about one
// load of thirty); a slice at a time, 100,000 channels are still gone within about a tenth of a
// second, and the window does not notice.
template <typename T>
void releaseInBackground(QList<T> &&list)
{
    constexpr qsizetype inPlaceLimit = 4096;
    if (list.size() < inPlaceLimit || !list.isDetached()) {
        list = {};
        return;
    }
    listReleasePool().start([doomed = std::move(list)]() mutable {
        BackgroundPriority::lowerCurrentThread();
        constexpr qsizetype slice = 2048;
        while (doomed.size() > slice) {
            doomed.resize(doomed.size() - slice);
            QThread::msleep(1);
        }
        doomed = QList<T>();
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
    destroyOnPool(std::move(object));
}
