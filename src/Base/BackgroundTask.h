#pragma once

#include "Base/BackgroundPriority.h"

#include <QFuture>
#include <QObject>
#include <QPromise>
#include <QThreadPool>

#include <memory>
#include <type_traits>
#include <utility>

// Runs work on the pool (below the main thread's priority), then the continuation on the context
// object's thread (not at all once the context is gone). The continuation is attached before the
// work can start: with Qt 6.4, a continuation attached while a worker finishes the same future can
// be lost under load, and the result with it.
template <typename Work, typename Continuation>
auto runInBackground(QThreadPool &pool, QObject *context, Work work, Continuation continuation)
{
    using Result = std::invoke_result_t<Work &>;
    auto promise = std::make_shared<QPromise<Result>>();
    promise->start();
    auto next = promise->future().then(context, std::move(continuation));
    pool.start([promise, work = std::move(work)]() mutable {
        BackgroundPriority::lowerCurrentThread();
        promise->addResult(work());
        promise->finish();
    });
    return next;
}

// The same on the global thread pool.
template <typename Work, typename Continuation>
auto runInBackground(QObject *context, Work work, Continuation continuation)
{
    return runInBackground(*QThreadPool::globalInstance(), context, std::move(work),
                           std::move(continuation));
}
