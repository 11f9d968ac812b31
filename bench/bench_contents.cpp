// Adding, restoring and listing: Morvanta against the same durable work done by hand on the
// same mounted vault, in one run. By hand, a move is cp -a --sparse=always, sync -f of where
// the copy went (and of the folder holding the encrypted image, for an add), then rm -rf.
//   bench_contents [runs] [big file MiB] [small files] [sparse file GiB]

#include "BenchSupport.h"

#include "engine/VaultManager.h"
#include "platform/FileLayer.h"
#include "platform/Process.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <array>
#include <sys/stat.h>

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

// Mostly a hole: `pieces` runs of 256 KiB of random data spread evenly over `gibibytes`.
void makeSparseFile(const QString& path, int gibibytes, int pieces) {
    QByteArray piece(256 << 10, Qt::Uninitialized);
    QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(piece.data()), piece.size() / 4);
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    const qint64 size = qint64(gibibytes) << 30;
    file.resize(size);
    for (int i = 0; i < pieces; ++i) {
        file.seek(size / pieces * i + (size / pieces) / 3);
        piece[0] = char(i);
        file.write(piece);
    }
}

// What the raw tools need to move `from` into `folder` with the same guarantee as Morvanta:
// the copy on stable storage (and the image, when the copy went into the vault) before the
// original goes.
// Times of the three steps by hand, for the phase table.
using HandSteps = std::array<double, 3>;

void moveByHand(const QString& from, const QString& folder, const QString& image, HandSteps* steps = nullptr) {
    const QString to = folder + '/' + QFileInfo(from).fileName();
    HandSteps spent{};
    spent[0] = bench::millisecondsOf(
        [&] { run("/bin/cp", {"-a", "--sparse=always", from.toStdString(), folder.toStdString()}); });
    spent[1] = bench::millisecondsOf([&] {
        run("/bin/sync", {"-f", to.toStdString()});
        if (!image.isEmpty())
            run("/bin/sync", {"-f", image.toStdString()});
    });
    spent[2] = bench::millisecondsOf([&] { run("/bin/rm", {"-rf", from.toStdString()}); });
    if (steps)
        *steps = spent;
}

double mebibytes(qint64 bytes) { return double(bytes) / (1 << 20); }

qint64 allocatedBytes(const QString& path) {
    struct stat info {};
    return ::stat(QFile::encodeName(path), &info) == 0 ? qint64(info.st_blocks) * 512 : -1;
}

qint64 diskUsage(const QString& folder) {
    const platform::ProcessResult result =
        platform::runProcess("/usr/bin/du", {"-sB1", folder.toStdString()}, std::nullopt);
    return QByteArray::fromStdString(result.out).split('\t').first().toLongLong();
}

// The real file operations, timed one by one: where a move's time goes.
class PhaseClock : public platform::FileLayer {
public:
    enum Phase { Survey, Copy, Flush, Rename, Remove, Count };
    static constexpr std::array<const char*, Count> kNames{"survey", "copy", "flush", "rename", "remove"};
    std::array<double, Count> spent{};

    platform::FileError survey(const std::string& path, platform::TreeSurvey& survey) override {
        return timed(Survey, [&] { return FileLayer::survey(path, survey); });
    }
    platform::FileError copy(const std::string& from, const std::string& to, const platform::TreeSurvey& survey,
                             const platform::CopyObserver& observer) override {
        return timed(Copy, [&] { return FileLayer::copy(from, to, survey, observer); });
    }
    platform::FileError flush(const std::string& path) override {
        return timed(Flush, [&] { return FileLayer::flush(path); });
    }
    platform::FileError rename(const std::string& from, const std::string& to) override {
        return timed(Rename, [&] { return FileLayer::rename(from, to); });
    }
    platform::FileError remove(const std::string& root, const platform::TreeSurvey& survey,
                               bool makeWritable) override {
        return timed(Remove, [&] { return FileLayer::remove(root, survey, makeWritable); });
    }

private:
    template <typename Step> platform::FileError timed(Phase phase, const Step& step) {
        platform::FileError error;
        spent[phase] += bench::millisecondsOf([&] { error = step(); });
        return error;
    }
};

// Morvanta's part of each row, phase by phase.
struct Phases {
    QString name;
    std::array<QList<double>, PhaseClock::Count> spent;
    QList<double> other; // the rest of each run
    std::array<QList<double>, 3> byHand; // cp, sync, rm
};

double timedPhases(PhaseClock& clock, Phases& phases, const std::function<void()>& step) {
    clock.spent = {};
    const double total = bench::millisecondsOf(step);
    double known = 0;
    for (int i = 0; i < PhaseClock::Count; ++i) {
        phases.spent[i] << clock.spent[i];
        known += clock.spent[i];
    }
    phases.other << total - known;
    return total;
}

void printPhases(const QList<Phases>& rows) {
    std::printf("\nWhere the time goes (ms, medians): Morvanta's steps (\"other\" is checks and the origins file), then the steps by hand\n\n");
    std::printf("| %-26s |", "operation");
    for (const char* name : PhaseClock::kNames)
        std::printf(" %8s |", name);
    std::printf(" %8s | %8s | %8s | %8s |\n|----------------------------|", "other", "cp", "sync", "rm");
    for (int i = 0; i <= PhaseClock::Count + 3; ++i)
        std::printf("----------|");
    std::printf("\n");
    for (const Phases& row : rows) {
        std::printf("| %-26s |", qPrintable(row.name));
        for (const QList<double>& spent : row.spent)
            std::printf(" %8.1f |", bench::median(spent));
        std::printf(" %8.1f |", bench::median(row.other));
        for (const QList<double>& spent : row.byHand)
            std::printf(" %8.1f |", bench::median(spent));
        std::printf("\n");
    }
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? QString(argv[1]).toInt() : 3;
    const int bigMiB = argc > 2 ? QString(argv[2]).toInt() : 1024;
    const int smallCount = argc > 3 ? QString(argv[3]).toInt() : 20000;
    const int sparseGiB = argc > 4 ? QString(argv[4]).toInt() : 10;

    bench::OpenVault open;
    VaultManager& vault = open.vault;
    QTemporaryDir outside;
    const QString mount = vault.mountPoint().toLocalFile();
    const auto clock = std::make_shared<PhaseClock>();
    vault.setFileLayer(clock);
    const QString image = vault.bundlePath();
    const qint64 emptyVault = diskUsage(image);

    makeBigFile(outside.filePath("big.bin"), bigMiB);
    bench::makeSmallFiles(outside.filePath("small"), smallCount);
    makeSparseFile(outside.filePath("sparse.img"), sparseGiB, 32);
    const qint64 sparseAllocated = allocatedBytes(outside.filePath("sparse.img"));
    qint64 sparseInVault = 0, sparseRestored = 0;

    QList<bench::Comparison> rows;
    QList<Phases> phases;
    for (const QString& name : {QStringLiteral("big.bin"), QStringLiteral("small"), QStringLiteral("sparse.img")}) {
        const QString label = name == "big.bin" ? QStringLiteral("%1 MiB file").arg(bigMiB)
                            : name == "small"   ? QStringLiteral("%1 small files").arg(smallCount)
                                                : QStringLiteral("%1 GiB sparse file").arg(sparseGiB);
        bench::Comparison add{"add " + label, {}, {}};
        bench::Comparison restore{"restore " + label, {}, {}};
        Phases addPhases{add.name, {}, {}, {}}, restorePhases{restore.name, {}, {}, {}};
        const QString original = outside.filePath(name);
        const QString inVault = mount + '/' + name;
        for (int i = 0; i < runs; ++i) {
            add.morvanta << timedPhases(*clock, addPhases, [&] { vault.addItem(QUrl::fromLocalFile(original)); });
            if (name == "sparse.img")
                sparseInVault = std::max(sparseInVault, diskUsage(image));
            restore.morvanta << timedPhases(*clock, restorePhases, [&] { vault.restoreItem(QUrl::fromLocalFile(inVault)); });
            if (name == "sparse.img")
                sparseRestored = std::max(sparseRestored, allocatedBytes(original));
            HandSteps steps;
            add.raw << bench::millisecondsOf([&] { moveByHand(original, mount, image, &steps); });
            for (int s = 0; s < 3; ++s)
                addPhases.byHand[s] << steps[s];
            restore.raw << bench::millisecondsOf([&] { moveByHand(inVault, outside.path(), {}, &steps); });
            for (int s = 0; s < 3; ++s)
                restorePhases.byHand[s] << steps[s];
        }
        rows << add << restore;
        phases << addPhases << restorePhases;
    }
    bench::printTable(QStringLiteral("Adding and restoring, durably (Morvanta vs cp -a --sparse=always, "
                                     "sync -f, rm -rf)"),
                      rows, runs);
    std::printf("\nOn disk: the %d GiB sparse file %.1f MiB; the encrypted image folder after Morvanta's "
                "add %.1f MiB (%.1f MiB empty); the file restored from it %.1f MiB.\n",
                sparseGiB, mebibytes(sparseAllocated), mebibytes(sparseInVault), mebibytes(emptyVault),
                mebibytes(sparseRestored));
    printPhases(phases);

    // Listing: the whole vault (one folder of n small files, measured deep) against du -sb.
    QList<bench::Comparison> listing;
    for (const int count : {1000, 5000, 20000}) {
        if (count > smallCount)
            break;
        QDir(mount + "/small").removeRecursively();
        bench::makeSmallFiles(mount + "/small", count);
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
