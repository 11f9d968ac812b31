// A stand-in for the application, for tests that kill it part-way: it opens the vault in
// SUPPORT with the password "pw" through the cheap-key tool, then carries out one job.
//   engine-driver SUPPORT add PATH [N]      add PATH; with N, die (SIGKILL) just before the
//                                           N-th file operation (0 = the first), or just
//                                           after the original's removal when N is past it
//   engine-driver SUPPORT rename NAME       rename NAME to "renamed" and back, over and over
//   engine-driver SUPPORT add-slowly PATH   add PATH off the main thread, slowly, quitting on
//                                           SIGTERM as the app does; "copying" once under way
// It prints "ready" once unlocked, then "done" when the job is over.

#include "engine/VaultManager.h"
#include "support/FuseHarness.h"
#include "platform/QuitSignals.h"
#include "support/RecordingFileLayer.h"

#include <QCoreApplication>
#include <QThread>

#include <csignal>
#include <cstdio>

namespace {

// Copies a chunk every 20 ms, and says when the first is done.
class SlowFiles : public platform::FileLayer {
public:
    platform::FileError copy(const std::string& from, const std::string& to, const platform::TreeSurvey& survey,
                             const platform::CopyObserver& observer) override {
        return FileLayer::copy(from, to, survey, [&](std::int64_t bytes, std::int64_t entries) {
            if (std::exchange(m_first, false)) {
                std::puts("copying");
                std::fflush(stdout);
            }
            QThread::msleep(20);
            return observer(bytes, entries);
        });
    }

private:
    bool m_first = true;
};

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 3)
        return 2;
    VaultManager vault(args[1], testsupport::fastToolRunner());
    vault.setIdleTimeoutSeconds(0);
    vault.unlock(QStringLiteral("pw"));
    std::puts("ready");
    std::fflush(stdout);

    const QString root = vault.mountPoint().toLocalFile() + QLatin1Char('/');
    if (args[2] == "add") {
        if (args.size() > 4) {
            auto files = std::make_shared<RecordingFileLayer>();
            const int dieAt = args[4].toInt();
            files->beforeEach = [files, dieAt](const QString&) {
                if (files->calls.size() - 1 == dieAt)
                    std::raise(SIGKILL);
            };
            files->afterEach = [files, dieAt](const QString& call) {
                if (call.startsWith("remove ") && files->calls.size() <= dieAt)
                    std::raise(SIGKILL);
            };
            vault.setFileLayer(files);
        }
        vault.addItem(QUrl::fromLocalFile(args[3]));
    } else if (args[2] == "add-slowly") {
        // The app's own wiring: a termination signal quits, and quitting locks.
        platform::lockOnTheWayOut([&vault] { vault.lockIfUnlocked(); });
        vault.setFileLayer(std::make_shared<SlowFiles>());
        vault.runInBackground([url = QUrl::fromLocalFile(args[3])](VaultManager& v) { v.addItem(url); }, {});
        return app.exec();
    } else if (args[2] == "rename") {
        for (int i = 0;; ++i) {
            const bool there = i % 2 == 0;
            vault.renameItem(QUrl::fromLocalFile(root + (there ? args[3] : QStringLiteral("renamed"))),
                             there ? QStringLiteral("renamed") : args[3]);
        }
    }
    std::puts("done");
    std::fflush(stdout);
    return 0;
}
