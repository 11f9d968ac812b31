// Backup and password change: Morvanta against the raw tools on the same vault, one run.
//   backup:          VaultManager::backupVault   vs  7z a (same options) on the mounted folder
//   password change: VaultManager::changePassword vs  gocryptfs -passwd alone, and vs the
//                    same steps by hand (fusermount3 -u, gocryptfs -passwd, gocryptfs mount)

#include "BenchSupport.h"

#include "engine/VaultManager.h"
#include "platform/Process.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

namespace {

void writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
}

// About `megabytes` of mixed content: 40 % random (incompressible), 40 % text, 20 % small
// files of both kinds in nested folders.
void fillMixed(const QString& root, int megabytes) {
    auto random = [](qsizetype size) {
        QByteArray bytes(size, Qt::Uninitialized);
        QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(bytes.data()), size / 4);
        return bytes;
    };
    const QByteArray line = "The quick brown fox jumps over the lazy dog, again and again.\n";
    const qsizetype mb = 1 << 20;
    const int bigFiles = std::max(1, megabytes / 25);
    for (int i = 0; i < bigFiles; ++i) {
        writeFile(root + QStringLiteral("/media-%1.bin").arg(i), random(megabytes * mb * 4 / 10 / bigFiles));
        writeFile(root + QStringLiteral("/log-%1.txt").arg(i),
                  line.repeated(megabytes * mb * 4 / 10 / bigFiles / line.size()));
    }
    const int smallFiles = megabytes * 10;
    for (int i = 0; i < smallFiles; ++i) {
        const QString folder = root + QStringLiteral("/docs/%1").arg(i % 50);
        QDir().mkpath(folder);
        writeFile(folder + QStringLiteral("/file-%1").arg(i),
                  i % 2 ? random(20 * 1024) : line.repeated(20 * 1024 / line.size()));
    }
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int megabytes = argc > 1 ? QString(argv[1]).toInt() : 500;
    const int runs = argc > 2 ? QString(argv[2]).toInt() : 3;

    QTemporaryDir runtime, support;
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
    QString password = QStringLiteral("bench password");
    VaultManager vault(support.path());
    vault.setIdleTimeoutSeconds(0);
    vault.createVault(password);
    vault.unlock(password);
    fillMixed(vault.mountPoint().toLocalFile(), megabytes);

    bench::Comparison backup{"backup", {}, {}};
    const QString ours = support.filePath("ours.7z");
    const std::string raw = support.filePath("raw.7z").toStdString();
    for (int run = 0; run < runs; ++run) {
        backup.morvanta << bench::millisecondsOf([&] { vault.backupVault(QUrl::fromLocalFile(ours)); });
        QFile::remove(QString::fromStdString(raw));
        backup.raw << bench::millisecondsOf([&] {
            platform::runProcess("/usr/bin/7z",
                                 {"a", "-t7z", "-mhe=on", "-mx=1", "-bd", "-p", "-snl", "-y", raw, "."},
                                 password.toStdString() + "\n", platform::OutputCapture::MemoryFiles,
                                 vault.mountPoint().toLocalFile().toStdString());
        });
    }
    const qint64 archive = QFileInfo(ours).size();

    bench::Comparison reKeyAlone{"password change (-passwd)", {}, {}};
    bench::Comparison reKeyFull{"password change (all)", {}, {}};
    const std::string cipher = vault.bundlePath().toStdString();
    const std::string rawMount = runtime.filePath("raw").toStdString();
    QDir().mkpath(runtime.filePath("raw"));
    for (int run = 0; run < runs * 2; ++run) {
        const QString next = QStringLiteral("bench password %1").arg(run);
        const double ms = bench::millisecondsOf([&] { vault.changePassword(password, next); });
        reKeyAlone.morvanta << ms;
        reKeyFull.morvanta << ms;
        password = next;
        vault.lock();

        const std::string twoLines = (password + "\n" + password + "\n").toStdString();
        const std::string line = (password + "\n").toStdString();
        reKeyAlone.raw << bench::millisecondsOf([&] {
            platform::runProcess("/usr/bin/gocryptfs", {"-passwd", "-q", cipher}, twoLines);
        });
        platform::runProcess("/usr/bin/gocryptfs", {"-q", cipher, rawMount}, line,
                             platform::OutputCapture::MemoryFiles);
        reKeyFull.raw << bench::millisecondsOf([&] {
            platform::runProcess("/usr/bin/fusermount3", {"-u", rawMount}, std::nullopt);
            platform::runProcess("/usr/bin/gocryptfs", {"-passwd", "-q", cipher}, twoLines);
            platform::runProcess("/usr/bin/gocryptfs", {"-q", cipher, rawMount}, line,
                                 platform::OutputCapture::MemoryFiles);
        });
        platform::runProcess("/usr/bin/fusermount3", {"-u", rawMount}, std::nullopt);
        vault.unlock(password);
    }
    vault.lock();

    bench::printTable(QStringLiteral("Backup of a mixed %1 MB vault (archive %2 MB), and "
                                     "password change")
                          .arg(megabytes)
                          .arg(archive >> 20),
                      {backup, reKeyAlone, reKeyFull}, runs);
    return 0;
}
