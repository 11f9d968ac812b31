// Unlock-to-listed and lock: Morvanta (engine + disk-image tool + gocryptfs) against
// gocryptfs and fusermount3 run directly on the same vault, alternating, in one run.

#include "BenchSupport.h"

#include "engine/VaultManager.h"
#include "platform/Process.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? QString(argv[1]).toInt() : 7;
    const int files = argc > 2 ? QString(argv[2]).toInt() : 1000;

    QTemporaryDir runtime, support;
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
    const QString password = QStringLiteral("bench password");
    VaultManager vault(support.path());
    vault.createVault(password);
    vault.unlock(password);
    for (int i = 0; i < files; ++i) {
        QFile file(vault.mountPoint().toLocalFile() + QStringLiteral("/file-%1.txt").arg(i));
        file.open(QIODevice::WriteOnly);
        file.write(QByteArray(512, 'x'));
    }
    vault.lock();

    const std::string cipher = vault.bundlePath().toStdString();
    const QString rawMount = runtime.filePath("raw");
    QDir().mkpath(rawMount);
    const std::string line = password.toStdString() + "\n";

    bench::Comparison unlock{"unlock to listed", {}, {}};
    bench::Comparison lock{"lock", {}, {}};
    qsizetype listed = 0;
    for (int run = 0; run < runs; ++run) {
        unlock.morvanta << bench::millisecondsOf([&] {
            vault.unlock(password);
            listed = QDir(vault.mountPoint().toLocalFile()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size();
        });
        lock.morvanta << bench::millisecondsOf([&] { vault.lock(); });

        unlock.raw << bench::millisecondsOf([&] {
            platform::runProcess("/usr/bin/gocryptfs", {"-q", cipher, rawMount.toStdString()}, line,
                                 platform::OutputCapture::MemoryFiles);
            listed = QDir(rawMount).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size();
        });
        lock.raw << bench::millisecondsOf([&] {
            platform::runProcess("/usr/bin/fusermount3", {"-u", rawMount.toStdString()},
                                 std::nullopt);
        });
    }
    bench::printTable(QStringLiteral("Vault lifecycle, %1 files of 512 bytes, listed %2")
                          .arg(files)
                          .arg(listed),
                      {unlock, lock}, runs);
    return 0;
}
