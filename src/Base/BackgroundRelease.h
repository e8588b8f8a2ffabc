#pragma once

#include "Base/BackgroundPriority.h"

#include <QList>
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
    destroyOnPool(std::move(list));
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
