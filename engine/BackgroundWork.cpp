// Long work off the window's thread: one piece at a time on a worker, with progress the
// window can show, a cancel that rolls back, and a lock that always wins.

#include "VaultManager.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QThread>

void VaultManager::runInBackground(Work work, WorkDone done) {
    finishBackgroundWork(false);
    m_cancelRequested = false;
    m_isWorking = true;
    emit isWorkingChanged();
    m_worker = std::thread([this, work = std::move(work), done = std::move(done)] {
        std::optional<VaultError> error;
        try {
            work(*this);
        } catch (const VaultError& thrown) {
            error = thrown;
        }
        // Queued behind every change the work published, so that `done` sees them all.
        QMetaObject::invokeMethod(
            this,
            [this, error, done] {
                setProgress({});
                m_isWorking = false;
                emit isWorkingChanged();
                if (done)
                    done(error);
            },
            Qt::QueuedConnection);
    });
}

void VaultManager::lockInBackground(std::function<void(const std::optional<VaultError>&)> done) {
    // The lock follows the work under way on the worker, so that this thread waits for
    // neither its rollback nor the detach. Anything started later waits for both.
    m_cancelRequested = true;
    std::thread previous = std::move(m_worker);
    m_worker = std::thread([this, previous = std::move(previous), done = std::move(done)]() mutable {
        if (previous.joinable())
            previous.join();
        std::optional<VaultError> error;
        try {
            // The work that gave way may have locked the vault itself.
            if (!m_mountPoint.isEmpty())
                detachAndPublishLocked();
        } catch (const VaultError& thrown) {
            error = thrown;
        }
        QMetaObject::invokeMethod(
            this, [error, done] { done(error); }, Qt::QueuedConnection);
    });
}

void VaultManager::cancelWork() {
    if (m_isWorking)
        m_cancelRequested = true;
}

bool VaultManager::wasCancelled(const VaultError& error) {
    return error.kind() == VaultError::Case::ioFailed && error.payload() == kCancelledText;
}

void VaultManager::finishBackgroundWork(bool cancel) {
    if (!m_worker.joinable())
        return;
    if (cancel)
        m_cancelRequested = true;
    m_worker.join();
    m_cancelRequested = false;
    // What the work published, and its end, are waiting in the queue: they go first, in
    // order, so that nothing published later is overtaken by them.
    QCoreApplication::sendPostedEvents(this, QEvent::MetaCall);
}

void VaultManager::publish(std::function<void()> change) {
    if (QThread::currentThread() == thread())
        change();
    else
        QMetaObject::invokeMethod(this, std::move(change), Qt::QueuedConnection);
}

platform::CopyObserver VaultManager::progressObserver(const QString& name, std::int64_t totalBytes,
                                                      std::int64_t entries) {
    const WorkProgress start{name, 0, double(totalBytes), 0, int(entries)};
    setProgress(start);
    auto clock = std::make_shared<QElapsedTimer>();
    clock->start();
    return [this, start, clock](std::int64_t bytes, std::int64_t entries) {
        if (m_cancelRequested)
            return false;
        // A few times a second is all a person can read; more would only load the window.
        if (clock->elapsed() >= 40 || entries == start.filesTotal) {
            clock->restart();
            WorkProgress now = start;
            now.bytesDone = double(bytes);
            now.filesDone = int(entries);
            setProgress(now);
        }
        return true;
    };
}

void VaultManager::setProgress(const WorkProgress& progress) {
    publish([this, progress] {
        if (progress == m_progress)
            return;
        m_progress = progress;
        emit progressChanged();
    });
}
