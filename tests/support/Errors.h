#pragma once

#include "engine/VaultError.h"

#include <functional>
#include <optional>

namespace testsupport {

// The VaultError an operation throws, if any.
inline std::optional<VaultError> thrownBy(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const VaultError& error) {
        return error;
    }
    return std::nullopt;
}

// Its text, or "<no error>".
inline QString errorOf(const std::function<void()>& operation) {
    const std::optional<VaultError> error = thrownBy(operation);
    return error ? error->errorDescription() : QStringLiteral("<no error>");
}

} // namespace testsupport
