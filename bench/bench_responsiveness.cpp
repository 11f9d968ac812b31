// How the window's thread fares while the vault works: a timer that should tick every 16 ms
// records its worst gap during each long operation, beside the operation's own time; and
// how long a lock takes, from the request to the vault unmounted, when it arrives while the
// operation is under way, and the timer's worst gap meanwhile.
//   bench_responsiveness [big file MiB] [backup MB] [small files]

#include "BenchSupport.h"

#include "engine/VaultManager.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>

namespace {

void writeNoise(const QString& path, qint64 bytes) {
    QByteArray block(1 << 20, Qt::Uninitialized);
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    for (qint64 done = 0; done < bytes; done += block.size()) {
        QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(block.data()), block.size() / 4);
        file.write(block.constData(), std::min<qint64>(block.size(), bytes - done));
    }
}

struct Measured {
    double operationMs = 0;
    double worstGapMs = 0;
};

// Runs what `start` starts, until it calls back, while a 16 ms timer on this thread keeps time.
Measured timed(const std::function<void(std::function<void()> finished)>& start) {
    QElapsedTimer clock, total;
    double worst = 0;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        worst = std::max(worst, double(clock.nsecsElapsed()) / 1e6 - 16.0);
        clock.restart();
    });
    bool finished = false;
    total.start();
    clock.start();
    ticker.start(16);
    start([&finished] { finished = true; });
    while (!finished)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return {double(total.nsecsElapsed()) / 1e6, std::max(0.0, worst)};
}

// Runs `work` off the window's thread and waits for it.
Measured measure(VaultManager& vault, const VaultManager::Work& work) {
    return timed([&](std::function<void()> finished) {
        vault.runInBackground(work, [finished](const std::optional<VaultError>& error) {
            if (error)
                qFatal("%s", qPrintable(error->errorDescription()));
            finished();
        });
    });
}

// Starts `work`, lets it run for a while, then locks as the lock button does: the time until
// the vault is unmounted, and the window's thread meanwhile.
Measured lockDuring(VaultManager& vault, const VaultManager::Work& work) {
    vault.runInBackground(work, {});
    QElapsedTimer wait;
    wait.start();
    while (wait.elapsed() < 300)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    const Measured lock = timed([&](std::function<void()> finished) {
        vault.lockInBackground([finished](const std::optional<VaultError>&) { finished(); });
    });
    vault.unlock(QStringLiteral("bench"));
    return lock;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int bigMiB = argc > 1 ? QString(argv[1]).toInt() : 1024;
    const int backupMB = argc > 2 ? QString(argv[2]).toInt() : 500;
    const int smallCount = argc > 3 ? QString(argv[3]).toInt() : 20000;

    bench::OpenVault open;
    VaultManager& vault = open.vault;
    QTemporaryDir outside;
    const auto root = [&vault] { return vault.mountPoint().toLocalFile(); };
    const QUrl big = QUrl::fromLocalFile(outside.filePath("big.bin"));
    const QString backup = outside.filePath("backup.7z");

    writeNoise(outside.filePath("big.bin"), qint64(bigMiB) << 20);
    const Measured add = measure(vault, [&](VaultManager& v) { v.addItem(big); });
    // Out again, so that the backup holds just its own data, and the big file is at hand for
    // the lock during an add.
    vault.restoreItem(QUrl::fromLocalFile(root() + "/big.bin"));
    writeNoise(root() + "/noise.bin", qint64(backupMB) * 1000 * 1000);
    const Measured backupRun = measure(vault, [&](VaultManager& v) { v.backupVault(QUrl::fromLocalFile(backup)); });
    bench::makeSmallFiles(root() + "/small", smallCount);
    const Measured erase =
        measure(vault, [&](VaultManager& v) { v.deleteItem(QUrl::fromLocalFile(root() + "/small")); });

    const Measured lockAdd = lockDuring(vault, [&](VaultManager& v) { v.addItem(big); });
    const Measured lockBackup =
        lockDuring(vault, [&](VaultManager& v) { v.backupVault(QUrl::fromLocalFile(backup)); });
    bench::makeSmallFiles(root() + "/small", smallCount);
    const Measured lockErase =
        lockDuring(vault, [&](VaultManager& v) { v.deleteItem(QUrl::fromLocalFile(root() + "/small")); });

    std::printf("\nThe window's thread while the vault works (goal: worst gap under 50 ms, lock under 1 s)\n\n");
    std::printf("| %-28s | %12s | %12s | %12s | %12s |\n", "operation", "operation ms", "worst gap ms",
                "lock ms", "its gap ms");
    std::printf("|%s|%s|%s|%s|%s|\n", "------------------------------", "--------------", "--------------",
                "--------------", "--------------");
    const auto row = [](const QString& name, const Measured& m, const Measured& lock) {
        std::printf("| %-28s | %12.1f | %12.1f | %12.1f | %12.1f |\n", qPrintable(name), m.operationMs,
                    m.worstGapMs, lock.operationMs, lock.worstGapMs);
    };
    row(QStringLiteral("add %1 MiB file").arg(bigMiB), add, lockAdd);
    row(QStringLiteral("backup of %1 MB").arg(backupMB), backupRun, lockBackup);
    row(QStringLiteral("delete %1 small files").arg(smallCount), erase, lockErase);
    vault.lock();
    return 0;
}
