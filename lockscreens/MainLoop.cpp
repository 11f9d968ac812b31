#include "MainLoop.h"

#include "engine/VaultManager.h"

#include <QPointer>

void runVaultWork(QObject* context, VaultManager* vault, std::function<void(VaultManager&)> work,
                  std::function<void(const std::optional<VaultError>&)> done, const VaultError& missing) {
    if (!vault) {
        done(missing);
        return;
    }
    vault->runInBackground(std::move(work),
                           [guard = QPointer<QObject>(context), done = std::move(done)](
                               const std::optional<VaultError>& error) {
                               if (guard)
                                   done(error);
                           });
}
