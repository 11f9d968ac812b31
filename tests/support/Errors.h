#pragma once

#include "engine/VaultError.h"

#include <functional>

namespace testsupport {

// The text of the VaultError an operation throws, or "<no error>".
inline QString errorOf(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const VaultError& error) {
        return error.errorDescription();
    }
    return QStringLiteral("<no error>");
}

} // namespace testsupport
