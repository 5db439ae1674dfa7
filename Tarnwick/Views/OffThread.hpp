#pragma once

#include <QCoreApplication>
#include <QMetaObject>
#include <QPointer>
#include <QThreadPool>

#include <functional>
#include <memory>

namespace tarnwick::OffThread {

// Runs work on the shared pool and hands its result to done on the main thread, unless
// receiver is gone by then. Anything that grows with the tree goes through here, so the
// window never waits on it.
template <typename Result>
void run(QObject* receiver, std::function<Result()> work, std::function<void(Result)> done)
{
    QPointer<QObject> guard(receiver);
    QThreadPool::globalInstance()->start([guard, work = std::move(work), done = std::move(done)]() mutable {
        auto result = std::make_shared<Result>(work());
        // The application outlives the pool (it waits for the pool when it ends), so it is a
        // safe target from here; the receiver is looked at only on the main thread.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [guard, result, done = std::move(done)] {
                if (guard)
                    done(std::move(*result));
            },
            Qt::QueuedConnection);
    });
}

}
