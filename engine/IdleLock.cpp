// The automatic lock after a stretch without vault actions.

#include "VaultManager.h"

#include <QMetaObject>
#include <QThread>

#include <cmath>
#include <limits>

void VaultManager::restartIdleTimer() {
    if (QThread::currentThread() != thread()) {
        publish([this] { restartIdleTimer(); });
        return;
    }
    stopIdleTimer();
    // Strictly greater: 0 turns the automatic lock off.
    if (!(m_idleTimeoutSeconds > 0.0))
        return;
    const double milliseconds = std::ceil(m_idleTimeoutSeconds * 1000.0);
    const int interval = milliseconds >= double(std::numeric_limits<int>::max())
                             ? std::numeric_limits<int>::max()
                             : int(milliseconds);

    auto* timer = new QTimer(this);
    timer->setSingleShot(true);
    timer->setInterval(interval);
    // The lock itself is queued, so that it runs like any user action rather than inside
    // the timer's own signal; a failure has nobody to tell and is dropped.
    const QPointer<VaultManager> vault(this);
    connect(timer, &QTimer::timeout, this, [vault] {
        QMetaObject::invokeMethod(
            vault,
            [vault] {
                if (vault)
                    vault->lockIfUnlocked();
            },
            Qt::QueuedConnection);
    });
    timer->start();
    m_idleTimer = timer;
}

QDeadlineTimer VaultManager::idleLockDeadline() const {
    if (!m_idleTimer || !m_idleTimer->isActive())
        return QDeadlineTimer(QDeadlineTimer::Forever);
    return QDeadlineTimer(m_idleTimer->remainingTime());
}

void VaultManager::stopIdleTimer() {
    if (QThread::currentThread() != thread()) {
        publish([this] { stopIdleTimer(); });
        return;
    }
    delete m_idleTimer.data();
    m_idleTimer = nullptr;
}

void VaultManager::lockIfUnlocked() {
    // Whatever runs gives way first (an unlock under way finishes, then locks).
    finishBackgroundWork(true);
    if (!m_isUnlocked)
        return;
    try {
        lock();
    } catch (const VaultError&) {
    }
}
