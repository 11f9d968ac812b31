#pragma once

#include <QObject>

#include <functional>
#include <optional>

class VaultManager;
class VaultError;

// Runs `work` on the vault's worker, off the window's thread; `done` runs back on the
// window's thread with the error, if any, unless `context` has gone meanwhile. Without a
// vault, `done` gets `missing`.
void runVaultWork(QObject* context, VaultManager* vault, std::function<void(VaultManager&)> work,
                  std::function<void(const std::optional<VaultError>&)> done, const VaultError& missing);
