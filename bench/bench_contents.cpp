// Adding, restoring and listing: Morvanta against cp -a, rm -rf and du -sb on the same
// mounted vault, in one run.
//   bench_contents [runs] [big file MiB] [small files]

#include "BenchSupport.h"

#include "engine/VaultManager.h"
#include "platform/Process.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

namespace {

void run(const std::string& program, const std::vector<std::string>& args) {
    const platform::ProcessResult result = platform::runProcess(program, args, std::nullopt);
    if (result.status != 0)
        qFatal("%s failed: %s", program.c_str(), result.err.c_str());
}

void makeBigFile(const QString& path, int mebibytes) {
    QByteArray block(1 << 20, Qt::Uninitialized);
    QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(block.data()), block.size() / 4);
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    for (int i = 0; i < mebibytes; ++i) {
        block[0] = char(i);
        file.write(block);
    }
}

void makeSmallFiles(const QString& folder, int count) {
    QByteArray bytes(4096, 'x');
    for (int i = 0; i < count; ++i) {
        const QString sub = folder + QStringLiteral("/%1").arg(i / 1000);
        if (i % 1000 == 0)
            QDir().mkpath(sub);
        QFile file(sub + QStringLiteral("/file-%1.txt").arg(i));
        file.open(QIODevice::WriteOnly);
        bytes[0] = char(i);
        file.write(bytes);
    }
}

// The same file operations without flushing to stable storage: what durability costs.
class UnflushedFiles : public platform::FileLayer {
public:
    platform::FileError flush(const std::string&) override { return std::nullopt; }
};

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? QString(argv[1]).toInt() : 3;
    const int bigMiB = argc > 2 ? QString(argv[2]).toInt() : 1024;
    const int smallCount = argc > 3 ? QString(argv[3]).toInt() : 20000;

    QTemporaryDir runtime, support, outside;
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime.path()));
    VaultManager vault(support.path());
    vault.setIdleTimeoutSeconds(0);
    vault.createVault(QStringLiteral("bench"));
    vault.unlock(QStringLiteral("bench"));
    const QString mount = vault.mountPoint().toLocalFile();

    makeBigFile(outside.filePath("big.bin"), bigMiB);
    makeSmallFiles(outside.filePath("small"), smallCount);

    QList<bench::Comparison> rows;
    for (const QString& name : {QStringLiteral("big.bin"), QStringLiteral("small")}) {
        const QString label = name == "big.bin" ? QStringLiteral("%1 MiB file").arg(bigMiB)
                                                : QStringLiteral("%1 small files").arg(smallCount);
        bench::Comparison add{"add " + label, {}, {}};
        bench::Comparison restore{"restore " + label, {}, {}};
        const std::string original = outside.filePath(name).toStdString();
        const std::string inVault = (mount + '/' + name).toStdString();
        for (int i = 0; i < runs; ++i) {
            add.morvanta << bench::millisecondsOf(
                [&] { vault.addItem(QUrl::fromLocalFile(outside.filePath(name))); });
            restore.morvanta << bench::millisecondsOf(
                [&] { vault.restoreItem(QUrl::fromLocalFile(mount + '/' + name)); });
            add.raw << bench::millisecondsOf([&] {
                run("/bin/cp", {"-a", original, mount.toStdString()});
                run("/bin/rm", {"-rf", original});
            });
            restore.raw << bench::millisecondsOf([&] {
                run("/bin/cp", {"-a", inVault, outside.path().toStdString()});
                run("/bin/rm", {"-rf", inVault});
            });
        }
        rows << add << restore;
    }

    // Durability: an add that flushes (as shipped) against one that does not, on one file.
    {
        bench::Comparison flushed{QStringLiteral("add %1 MiB, flushed vs not").arg(bigMiB), {}, {}};
        const auto unflushed = std::make_shared<UnflushedFiles>();
        const auto shipped = std::make_shared<platform::FileLayer>();
        const QUrl original = QUrl::fromLocalFile(outside.filePath("big.bin"));
        const QUrl inVault = QUrl::fromLocalFile(mount + "/big.bin");
        for (int i = 0; i < runs; ++i) {
            vault.setFileLayer(shipped);
            flushed.morvanta << bench::millisecondsOf([&] { vault.addItem(original); });
            vault.restoreItem(inVault);
            vault.setFileLayer(unflushed);
            flushed.raw << bench::millisecondsOf([&] { vault.addItem(original); });
            vault.restoreItem(inVault);
        }
        vault.setFileLayer(shipped);
        rows << flushed;
    }
    bench::printTable(QStringLiteral("Adding and restoring (Morvanta vs cp -a + rm -rf)"), rows, runs);

    // Listing: the whole vault (one folder of n small files, measured deep) against du -sb.
    QList<bench::Comparison> listing;
    for (const int count : {1000, 5000, 20000}) {
        if (count > smallCount)
            break;
        QDir(mount + "/small").removeRecursively();
        makeSmallFiles(mount + "/small", count);
        bench::Comparison row{QStringLiteral("list, %1 files").arg(count), {}, {}};
        for (int i = 0; i < runs; ++i) {
            row.morvanta << bench::millisecondsOf([&] { vault.refreshItems(); });
            row.raw << bench::millisecondsOf([&] { run("/usr/bin/du", {"-sb", mount.toStdString()}); });
        }
        listing << row;
    }
    bench::printTable(QStringLiteral("Listing the vault (refreshItems vs du -sb of the mount)"), listing, runs);
    vault.lock();
    return 0;
}
