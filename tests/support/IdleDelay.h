#pragma once

#include "engine/VaultManager.h"

#include <functional>

namespace testsupport {

// Whether `action` counts the automatic lock's delay again: the delay pending before it is
// short, the one set (but not started) is long, so only a restart pushes the deadline out.
inline bool restartsIdleDelay(VaultManager& vault, const std::function<void()>& action) {
    const double delay = vault.idleTimeoutSeconds();
    vault.setIdleTimeoutSeconds(1000);
    vault.restartIdleTimer();
    vault.setIdleTimeoutSeconds(5000);
    action();
    const bool restarted = vault.idleLockDeadline().remainingTime() > 2000 * 1000;
    if (vault.idleTimeoutSeconds() == 5000)
        vault.setIdleTimeoutSeconds(delay);
    return restarted;
}

} // namespace testsupport
