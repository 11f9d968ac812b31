// The vault's whole life against real gocryptfs on FUSE, through the disk-image tool.

#include "engine/VaultManager.h"
#include "platform/Process.h"
#include "support/Errors.h"
#include "support/FuseHarness.h"
#include "support/RecordingRunner.h"
#include "support/Trees.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <atomic>
#include <csignal>
#include <thread>

class VaultManagerTestAccess {
public:
    static bool remembersPassword(const VaultManager& vault) { return vault.m_unlockedPassword.has_value(); }
};

using testsupport::errorOf;
using testsupport::mountsBelow;
using testsupport::readFile;
using testsupport::treeOf;
using testsupport::writeFile;

namespace {

// Watches every process's command line and environment for a secret while `operation` runs.
QStringList processesHoldingDuring(const QByteArray& secret, const std::function<void()>& operation) {
    std::atomic<bool> done = false;
    QStringList hits;
    std::thread watcher([&] {
        while (!done)
            hits += testsupport::processesHolding(secret);
    });
    operation();
    done = true;
    watcher.join();
    hits.removeDuplicates();
    return hits;
}

void fillWithMixedContent(const QString& root) {
    QDir().mkpath(root + "/Tax 2025/receipts");
    QDir().mkpath(root + "/empty folder");
    writeFile(root + "/notes ü.txt", "plain text\n");
    writeFile(root + "/.hidden", "hidden");
    writeFile(root + "/Tax 2025/receipts/scan.bin", QByteArray(300000, '\0') + "tail");
    QByteArray random(200000, Qt::Uninitialized);
    QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(random.data()), random.size() / 4);
    writeFile(root + "/Tax 2025/random.dat", random);
    QFile::link("notes ü.txt", root + "/link to notes");
}

// The way to open a backup without Morvanta: `7z x FILE`, which asks for the password.
int extractBackup(const QString& file, const QString& into, const QByteArray& password) {
    QDir().mkpath(into);
    return platform::runProcess("/usr/bin/7z", {"x", file.toStdString()}, (password + "\n").toStdString(),
                                platform::OutputCapture::MemoryFiles, into.toStdString())
        .status;
}

// A minimal PNG with one text chunk of the given type holding Thumb::URI, as thumbnailers
// other than Qt write it. (Chunk checksums are not checked by what reads it here.)
QByteArray pngWithText(const QByteArray& type, const QByteArray& value) {
    const auto chunk = [](const QByteArray& kind, const QByteArray& data) {
        QByteArray bytes(4, '\0');
        qToBigEndian<quint32>(quint32(data.size()), bytes.data());
        return bytes + kind + data + QByteArray(4, '\0');
    };
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + chunk("IHDR", QByteArray(13, '\1')) +
           chunk(type, QByteArray("Thumb::URI\0", 11) + value) + chunk("IEND", {});
}

} // namespace

class TestVaultLifecycle : public QObject {
    Q_OBJECT

    std::unique_ptr<testsupport::ScopedRuntimeDir> m_runtime;
    std::unique_ptr<QTemporaryDir> m_support;
    RecordingRunner m_tool;

    std::unique_ptr<VaultManager> makeVault() {
        return std::make_unique<VaultManager>(m_support->path(), m_tool.runner());
    }
    std::unique_ptr<VaultManager> makeUnlockedVault(const QString& password = "pw") {
        auto vault = makeVault();
        vault->createVault(password);
        vault->unlock(password);
        return vault;
    }
    static QString mountPath(const VaultManager& vault) { return vault.mountPoint().toLocalFile(); }

private slots:
    void init() {
        REQUIRE_FUSE();
        m_runtime = std::make_unique<testsupport::ScopedRuntimeDir>();
        m_support = std::make_unique<QTemporaryDir>();
        m_tool = RecordingRunner{};
        m_tool.passThrough = testsupport::fastToolRunner();
    }
    void cleanup() {
        m_support.reset();
        m_runtime.reset();
    }

    void createUnlockWriteLockAndReadBack() {
        auto vault = makeVault();
        QCOMPARE(errorOf([&] { vault->unlock("pw"); }), "Vault not initialized.");
        const QString password = QString::fromUtf8("  pässwörd mit Leerzeichen ");
        vault->createVault(password);
        QVERIFY(vault->vaultExists() && !vault->isUnlocked());
        QVERIFY(mountsBelow(m_runtime->path()).isEmpty());
        m_tool.calls.clear();
        QCOMPARE(errorOf([&] { vault->createVault("other"); }), "Vault already exists.");
        QVERIFY(m_tool.calls.isEmpty());

        vault->unlock(password);
        const QString mount = mountPath(*vault);
        QCOMPARE(mountsBelow(m_runtime->path()), QStringList{mount});
        // A file held open: the plain detach fails and the forced one closes the vault to it.
        QFile open(mount + "/note.txt");
        QVERIFY(open.open(QIODevice::ReadWrite) && open.write("kept under lock") == 15 && open.flush());
        // What lands in the vault is stored encrypted: the name shows nowhere in the image.
        QVERIFY(!QDir(vault->bundlePath()).entryList().join('|').contains("note"));
        m_tool.calls.clear();
        vault->lock();
        QCOMPARE(m_tool.argLists(), (QList<QStringList>{{"detach", mount}, {"detach", "-force", mount}}));
        QVERIFY(!vault->isUnlocked());
        QVERIFY(mountsBelow(m_runtime->path()).isEmpty());
        QVERIFY2(!QFileInfo::exists(mount), "the empty mount folder is removed");
        QVERIFY(!open.seek(0) || open.read(5).isEmpty());
        open.close();

        vault->unlock(password);
        QCOMPARE(readFile(mountPath(*vault) + "/note.txt"), QByteArray("kept under lock"));
        vault->lock();
    }

    // The shipped tool with its real key derivation: the slower it is, the longer a leaked
    // password would be visible. A home of its own, so that anything written "home" by any
    // library is seen here.
    void passwordStaysOffCommandLinesEnvironmentsAndDisk() {
        m_tool.passThrough = [](const QStringList& args, const std::optional<QString>& input,
                                const HDIUtilOutputLine& onLine) {
            return runHDIUtilProgram(testsupport::shippedToolPath(), args, input, onLine);
        };
        const QByteArray realHome = qgetenv("HOME");
        qputenv("HOME", QFile::encodeName(m_support->filePath("home")));
        QDir().mkpath(m_support->filePath("home"));
        const auto restoreHome = qScopeGuard([&] { qputenv("HOME", realHome); });
        const QByteArray secret = "Old-" + QByteArray::number(QRandomGenerator::system()->generate64(), 36);
        const QByteArray next = "New-" + QByteArray::number(QRandomGenerator::system()->generate64(), 36);
        std::unique_ptr<VaultManager> vault;

        QCOMPARE(processesHoldingDuring(secret, [&] { vault = makeUnlockedVault(secret); }), QStringList());
        // Guessing costs more than with gocryptfs's own default of 2^16.
        const auto config = QJsonDocument::fromJson(readFile(vault->bundlePath() + "/gocryptfs.conf"));
        QVERIFY(config["ScryptObject"]["N"].toInt() > 1 << 16);
        fillWithMixedContent(mountPath(*vault));
        const auto before = treeOf(mountPath(*vault));
        QCOMPARE(processesHoldingDuring(secret, [&] { vault->changePassword(secret, next); }), QStringList());
        QCOMPARE(treeOf(mountPath(*vault)), before);
        const auto backUp = [&] { vault->backupVault(QUrl::fromLocalFile(m_support->filePath("backup.7z"))); };
        QCOMPARE(processesHoldingDuring(next, backUp), QStringList());
        vault->lock();
        QVERIFY(!VaultManagerTestAccess::remembersPassword(*vault));
        for (const QByteArray& password : {secret, next}) {
            QCOMPARE(testsupport::processesHolding(password), QStringList());
            for (const QString& folder :
                 {m_support->path(), m_runtime->path(),
                  QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation),
                  QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation),
                  QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                      "/thumbnails"})
                QCOMPARE(testsupport::filesHolding(folder, password), QStringList());
        }
        // The new key opens the same files, the old one nothing.
        QCOMPARE(errorOf([&] { vault->unlock(secret); }), "Authentication failed.");
        vault->unlock(next);
        QCOMPARE(treeOf(mountPath(*vault)), before);
        vault->lock();
    }

    // A running instance's mount is left alone; one whose app is gone is detached at start,
    // with the desktop's traces of it, even once its gocryptfs is gone too and the mount dead.
    void aMountWhoseAppIsGoneIsDetachedAtStart() {
        QTemporaryDir desktop;
        qputenv("XDG_DATA_HOME", QFile::encodeName(desktop.path()));
        const auto restore = qScopeGuard([] { qunsetenv("XDG_DATA_HOME"); });
        auto live = makeUnlockedVault();
        makeVault();
        QCOMPARE(mountsBelow(m_runtime->path()), QStringList{mountPath(*live)});
        live->lock();

        VaultManager crashed(m_support->path(), testsupport::orphanedToolRunner());
        crashed.unlock("pw");
        const QString mount = mountPath(crashed);
        QVERIFY(writeFile(mount + "/kept.txt", "survives"));
        const QByteArray seen = QUrl::fromLocalFile(mount + "/kept.txt").toEncoded();
        QVERIFY(writeFile(desktop.filePath("recently-used.xbel"),
                          "<xbel version=\"1.0\"><bookmark href=\"" + seen + "\"/></xbel>"));
        for (const int pid : testsupport::gocryptfsDaemonsServing(m_support->path()))
            ::kill(pid, SIGKILL);
        QTRY_VERIFY(testsupport::gocryptfsDaemonsServing(m_support->path()).isEmpty());

        auto restarted = makeVault();
        QVERIFY(!restarted->isUnlocked());
        QVERIFY(mountsBelow(m_runtime->path()).isEmpty());
        QVERIFY(!QFileInfo::exists(mount));
        QVERIFY(!readFile(desktop.filePath("recently-used.xbel")).contains(seen));
        restarted->unlock("pw");
        QCOMPARE(readFile(mountPath(*restarted) + "/kept.txt"), QByteArray("survives"));
        restarted->lock();
    }

    void backupOpensWithThePasswordAndHoldsEverything() {
        const QByteArray password = "backup pässword";
        auto vault = makeUnlockedVault(QString::fromUtf8(password));
        fillWithMixedContent(mountPath(*vault));
        const QString backup = m_support->filePath("MorvantaVault-Backup.7z");

        // 7-Zip's own progress reaches the strip, only ever forwards, and ends complete.
        QList<double> shares;
        auto watch = connect(vault.get(), &VaultManager::progressChanged, this,
                             [&] { shares.append(vault->progress().fraction); });
        vault->backupVault(QUrl::fromLocalFile(backup));
        disconnect(watch);
        QVERIFY(std::is_sorted(shares.begin(), shares.end()));
        QVERIFY(shares.contains(0.0)); // 7-Zip's first report, as it starts writing
        QCOMPARE(shares.value(shares.size() - 1), 1.0);
        QCOMPARE(
            m_tool.calls.last(),
            (RecordingRunner::Call{{"create", "-encryption", "AES-256", "-stdinpass", "-srcfolder",
                                    mountPath(*vault), "-volname", "MorvantaVault", "-format",
                                    "UDZO", "-puppetstrings", "-ov", backup},
                                   QString::fromUtf8(password)}));
        QCOMPARE(extractBackup(backup, m_support->filePath("first"), password), 0);
        QCOMPARE(treeOf(m_support->filePath("first")), treeOf(mountPath(*vault)));
        QVERIFY(extractBackup(backup, m_support->filePath("wrong"), "not it") != 0);
        QCOMPARE(
            QDir(m_support->filePath("wrong")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
            QStringList());

        // A second backup to the same file replaces the first rather than adding to it.
        QVERIFY(QFile::remove(mountPath(*vault) + "/notes ü.txt"));
        QVERIFY(writeFile(mountPath(*vault) + "/new.txt", "second"));
        vault->backupVault(QUrl::fromLocalFile(backup));
        QCOMPARE(extractBackup(backup, m_support->filePath("second"), password), 0);
        QCOMPARE(treeOf(m_support->filePath("second")), treeOf(mountPath(*vault)));

        // One that does not read back is not kept.
        const QByteArray good = readFile(backup);
        qputenv("MORVANTA_TEST_DAMAGE_BACKUP", "1");
        const QString error = errorOf([&] { vault->backupVault(QUrl::fromLocalFile(backup)); });
        qunsetenv("MORVANTA_TEST_DAMAGE_BACKUP");
        QVERIFY2(error.contains("the backup could not be read back"), qPrintable(error));
        QCOMPARE(readFile(backup), good);
        QCOMPARE(QDir(m_support->path()).entryList({"*.partial-*"}), QStringList());
        vault->lock();
    }

    // Thumbnails as Qt, GNOME (plain text chunks) and KDE (international ones) write them,
    // and both recently-used lists.
    void lockingClearsTheDesktopsTracesOfTheVault() {
        QTemporaryDir desktop;
        qputenv("XDG_CACHE_HOME", QFile::encodeName(desktop.filePath("cache")));
        qputenv("XDG_DATA_HOME", QFile::encodeName(desktop.filePath("data")));
        const auto restore = qScopeGuard([] {
            qunsetenv("XDG_CACHE_HOME");
            qunsetenv("XDG_DATA_HOME");
        });
        auto vault = makeUnlockedVault();
        const QByteArray inside = QUrl::fromLocalFile(mountPath(*vault) + "/Holiday photo.jpg").toEncoded();
        const QByteArray outside = QUrl::fromLocalFile(m_support->filePath("public.jpg")).toEncoded();
        for (const char* folder :
             {"cache/thumbnails/normal", "cache/thumbnails/fail/gnome-thumbnail-factory",
              "data/RecentDocuments"})
            QDir().mkpath(desktop.filePath(folder));
        for (const auto& [name, uri] : {std::pair{"normal/in.png", inside}, {"normal/out.png", outside}}) {
            QImage image(8, 8, QImage::Format_ARGB32);
            image.setText("Thumb::URI", QString::fromUtf8(uri));
            QVERIFY(image.save(desktop.filePath("cache/thumbnails/") + name, "png"));
        }
        QVERIFY(writeFile(desktop.filePath("cache/thumbnails/fail/gnome-thumbnail-factory/in.png"),
                          pngWithText("tEXt", inside)));
        QVERIFY(writeFile(desktop.filePath("cache/thumbnails/normal/intl.png"),
                          pngWithText("iTXt", QByteArray(4, '\0') + inside)));
        QVERIFY(writeFile(desktop.filePath("data/RecentDocuments/in.desktop"),
                          "[Desktop Entry]\nType=Link\nURL=" + inside + "\n"));
        QVERIFY(writeFile(desktop.filePath("data/recently-used.xbel"),
                          "<?xml version=\"1.0\"?>\n<xbel version=\"1.0\"><bookmark href=\"" +
                              inside + "\"><info/></bookmark><bookmark href=\"" + outside +
                              "\"><info/></bookmark></xbel>"));

        vault->lock();

        QCOMPARE(treeOf(desktop.filePath("cache/thumbnails")).keys(),
                 (QStringList{"fail", "fail/gnome-thumbnail-factory", "normal", "normal/out.png"}));
        QVERIFY(!QFileInfo::exists(desktop.filePath("data/RecentDocuments/in.desktop")));
        const QByteArray recent = readFile(desktop.filePath("data/recently-used.xbel"));
        QVERIFY2(!recent.contains("Holiday") && recent.contains("public.jpg"), recent.constData());
    }
};

QTEST_GUILESS_MAIN(TestVaultLifecycle)
#include "tst_vaultlifecycle.moc"
