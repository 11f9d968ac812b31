#include "MainLoop.h"

#include "engine/VaultManager.h"

#include <QGuiApplication>
#include <QPointer>
#include <QQuickWindow>
#include <QTimer>

#include <memory>

namespace {

QQuickWindow* shownQuickWindow() {
    for (QWindow* window : QGuiApplication::topLevelWindows()) {
        if (auto* quick = qobject_cast<QQuickWindow*>(window); quick && quick->isExposed())
            return quick;
    }
    return nullptr;
}

} // namespace

void runAfterNextFrame(QObject* context, std::function<void()> work) {
    QQuickWindow* window = shownQuickWindow();
    if (!window) {
        QTimer::singleShot(0, context, std::move(work));
        return;
    }
    // Whichever comes first: the next frame, or a short wait in case no frame comes at all.
    auto pending = std::make_shared<std::function<void()>>(std::move(work));
    auto runOnce = [pending, guard = QPointer<QObject>(context)] {
        if (guard && *pending)
            std::exchange(*pending, {})();
    };
    auto connection = std::make_shared<QMetaObject::Connection>();
    *connection = QObject::connect(
        window, &QQuickWindow::frameSwapped, context,
        [connection, runOnce] {
            QObject::disconnect(*connection);
            // Leave the frame's own signal handling before blocking the thread.
            QTimer::singleShot(0, runOnce);
        },
        Qt::QueuedConnection);
    QTimer::singleShot(250, context, [connection, runOnce] {
        QObject::disconnect(*connection);
        runOnce();
    });
    window->update();
}

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
