#include "CommandLine.h"
#include "MainWindow.h"
#include "Translation.h"
#include "engine/VaultManager.h"
#include "platform/FontWarmUp.h"
#include "platform/Hardening.h"
#include "platform/Panels.h"
#include "platform/QuitSignals.h"
#include "platform/SessionWatcher.h"
#include "platform/Settings.h"
#include "platform/SingleInstance.h"
#include "platform/Workspace.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QtQml/QQmlExtensionPlugin>

#include <functional>
#include <memory>

Q_IMPORT_QML_PLUGIN(MorvantaPlugin)
Q_IMPORT_QML_PLUGIN(Morvanta_LockScreensPlugin)
Q_IMPORT_QML_PLUGIN(Morvanta_BrowserPlugin)

namespace {

// Runs `work` on this thread once the window has shown its first frame.
void afterFirstFrame(QQuickWindow* window, std::function<void()> work) {
    QObject::connect(window, &QQuickWindow::frameSwapped, window, std::move(work),
                     Qt::ConnectionType(Qt::QueuedConnection | Qt::SingleShotConnection));
}

} // namespace

int main(int argc, char* argv[]) {
    // The master password lives in this process while the vault is open.
    platform::hardenProcess();

    // Any argument is a request from the command line (--lock, --help, --version); so is a
    // start with no display to show the window on, which it explains.
    if (argc > 1 || !windowCanShow())
        return runCommandLine(argc, argv);

    platform::FontWarmUp fonts;
    QGuiApplication app(argc, argv);
    QGuiApplication::setOrganizationName(QStringLiteral("Morvanta"));
    QGuiApplication::setApplicationName(QStringLiteral("Morvanta"));
    QGuiApplication::setDesktopFileName(QStringLiteral("morvanta"));
    QGuiApplication::setQuitOnLastWindowClosed(true);
    installTranslation();

    // Before the engine: the vault has one engine per user; a second one could only find the
    // vault held open by the first.
    platform::SingleInstance instance;
    if (!instance.isPrimary())
        return 0;

    platform::Settings settings;
    platform::Panels panels;
    platform::Workspace workspace;
    VaultManager vault;
    // `morvanta --lock` from a terminal or a keyboard shortcut.
    instance.setLockHandler([&vault] { return lockForCommandLine(vault); });

    platform::lockOnTheWayOut([&vault] { vault.lockIfUnlocked(); });
    QQmlApplicationEngine engine;
    QQuickWindow* window = loadMainWindow(engine, vault, settings, panels, workspace);
    if (!window)
        return 1;

    // What the first frame need not wait for, as nothing can be unlocked before it: a mount
    // left by a crash is looked for on the worker, ahead of any unlock; leaving the machine
    // locks the vault, before sleep (logind waits for it) and when the screen locks; the open
    // vault's screens are read in the background.
    std::unique_ptr<platform::SessionWatcher> session;
    afterFirstFrame(window, [&session, &vault, window] {
        vault.runInBackground([](VaultManager& v) { v.detachStaleMounts(); }, {});
        session = std::make_unique<platform::SessionWatcher>(QDBusConnection::systemBus(),
                                                             QDBusConnection::sessionBus());
        QObject::connect(session.get(), &platform::SessionWatcher::lockRequested, &vault,
                         &VaultManager::lockIfUnlocked, Qt::DirectConnection);
        QMetaObject::invokeMethod(window->findChild<QObject*>(QStringLiteral("rootView")),
                                  "preloadOpenVault");
    });

    QObject::connect(&instance, &platform::SingleInstance::activationRequested, window, [window] {
        window->show();
        window->raise();
        window->requestActivate();
    });
    return app.exec();
}
