// A stand-in for the app, for tests that kill it part-way: it opens the vault in SUPPORT
// with the password "pw", prints "ready", then adds PATH. With N it dies (SIGKILL) just before
// the N-th file operation (0 = the first), or just after the original's removal when N is past
// it; with add-held it holds the copy once under way ("copying") and quits on SIGTERM as the
// app does.    engine-driver SUPPORT add PATH N  |  engine-driver SUPPORT add-held PATH

#include "engine/VaultManager.h"
#include "platform/QuitSignals.h"
#include "support/FuseHarness.h"
#include "support/FileLayers.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <thread>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 4)
        return 2;
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ); // each line reaches the test whole, at once
    VaultManager vault(args[1], testsupport::fastToolRunner());
    vault.unlock(QStringLiteral("pw"));
    std::puts("ready");

    const QUrl item = QUrl::fromLocalFile(args[3]);
    if (args[2] == "add") {
        auto files = std::make_shared<RecordingFileLayer>();
        const int dieAt = args.value(4).toInt();
        files->beforeEach = [files, dieAt](const QString&) {
            if (files->calls.size() - 1 == dieAt)
                std::raise(SIGKILL);
        };
        files->afterEach = [files, dieAt](const QString& call) {
            if (call.startsWith("remove ") && files->calls.size() <= dieAt)
                std::raise(SIGKILL);
        };
        vault.setFileLayer(files);
        vault.addItem(item);
        return 0;
    }
    // The app's own wiring: a termination signal quits, and quitting locks.
    platform::lockOnTheWayOut([&vault] { vault.lockIfUnlocked(); });
    auto files = std::make_shared<GatedFileLayer>();
    vault.setFileLayer(files);
    vault.runInBackground([item](VaultManager& v) { v.addItem(item); }, {});
    std::thread([files] {
        files->reachedGate.acquire();
        std::puts("copying");
    }).detach();
    return app.exec();
}
