// The vault's whole life against real gocryptfs on FUSE, through the disk-image tool.

#include "engine/VaultManager.h"
#include "support/Errors.h"
#include "support/FuseHarness.h"
#include "platform/Process.h"
#include "support/RecordingRunner.h"
#include "support/Trees.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QStandardPaths>
#include <QTest>
#include <QtEndian>

#include <atomic>
#include <filesystem>
#include <csignal>
#include <thread>

class VaultManagerTestAccess {
public:
    static bool remembersPassword(const VaultManager& vault) {
        return vault.m_unlockedPassword.has_value();
    }
};

using testsupport::errorOf;
using testsupport::readFile;
using testsupport::treeOf;
using testsupport::writeFile;

namespace {

// Watches every process's command line and environment for a secret while `operation` runs.
template <typename Operation>
QStringList processesHoldingDuring(const QByteArray& secret, Operation operation) {
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
    writeFile(root + "/Tax 2025/receipts/scan.bin", QByteArray(300000, '\0') + "tail");
    writeFile(root + "/.morvanta-origins.json", R"({"notes ü.txt":"/home/a/notes ü.txt"})");
    QByteArray random(200000, Qt::Uninitialized);
    QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(random.data()),
                                          random.size() / 4);
    writeFile(root + "/Tax 2025/random.dat", random);
}

// The recipe the README gives for opening a backup without Morvanta: `7z x FILE`, which
// asks for the password.
platform::ProcessResult extractBackup(const QString& file, const QString& into,
                                      const QByteArray& password) {
    QDir().mkpath(into);
    const std::string line = (password + "\n").toStdString();
    return platform::runProcess("/usr/bin/7z", {"x", file.toStdString()}, line,
                                platform::OutputCapture::MemoryFiles, into.toStdString());
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
    QString mountPath(const VaultManager& vault) const { return vault.mountPoint().toLocalFile(); }

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
        const QString password = QString::fromUtf8("  pässwörd mit Leerzeichen ");
        vault->createVault(password);
        QVERIFY(vault->vaultExists());
        QVERIFY(!vault->isUnlocked());
        QVERIFY(testsupport::mountsBelow(m_runtime->path()).isEmpty());

        vault->unlock(password);
        QVERIFY(vault->isUnlocked());
        const QString mount = mountPath(*vault);
        QCOMPARE(testsupport::mountsBelow(m_runtime->path()), QStringList{mount});
        QVERIFY(writeFile(mount + "/note.txt", "kept under lock"));
        // What lands in the vault is stored encrypted: the name shows nowhere in the image.
        QVERIFY(!QDir(vault->bundlePath()).entryList().join('|').contains("note"));

        vault->lock();
        QVERIFY(!vault->isUnlocked());
        QVERIFY(testsupport::mountsBelow(m_runtime->path()).isEmpty());
        QVERIFY2(!QFileInfo::exists(mount), "the empty mount folder is removed");

        vault->unlock(password);
        QCOMPARE(readFile(mountPath(*vault) + "/note.txt"), QByteArray("kept under lock"));
        vault->lock();
    }

    void lockWithAFileHeldOpenIsForced() {
        auto vault = makeVault();
        vault->createVault("pw");
        vault->unlock("pw");
        const QString mount = mountPath(*vault);
        QFile open(mount + "/open.bin");
        QVERIFY(open.open(QIODevice::ReadWrite));
        QCOMPARE(open.write("written before the lock"), 23);
        QVERIFY(open.flush());
        m_tool.calls.clear();

        vault->lock();

        QCOMPARE(m_tool.argLists(),
                 (QList<QStringList>{{"detach", mount}, {"detach", "-force", mount}}));
        QVERIFY(!vault->isUnlocked());
        QVERIFY(testsupport::mountsBelow(m_runtime->path()).isEmpty());
        // The open file no longer reaches the vault.
        QVERIFY(!open.seek(0) || open.read(5).isEmpty());
        open.close();

        QCOMPARE(errorOf([&] { vault->lock(); }), QStringLiteral("Vault not mounted."));

        vault->unlock("pw");
        QCOMPARE(readFile(mountPath(*vault) + "/open.bin"), QByteArray("written before the lock"));
        vault->lock();
    }

    void refusalsRunNothing() {
        auto vault = makeVault();
        QCOMPARE(errorOf([&] { vault->unlock("pw"); }),
                 QStringLiteral("Vault not initialized."));
        vault->createVault("pw");
        m_tool.calls.clear();
        QCOMPARE(errorOf([&] { vault->createVault("other"); }),
                 QStringLiteral("Vault already exists."));
        QVERIFY(m_tool.calls.isEmpty());
        // The first vault is untouched: its password still opens it.
        vault->unlock("pw");
        vault->lock();
    }

    void passwordStaysOffCommandLinesEnvironmentsAndDisk() {
        // The shipped tool, with its real key derivation: the slower it is, the longer a
        // leaked password would be visible. A home of its own, so that anything written
        // "home" by any library is seen here.
        m_tool.passThrough = [](const QStringList& args, const std::optional<QString>& stdinText,
                                const HDIUtilOutputLine& onLine) {
            return runHDIUtilProgram(testsupport::shippedToolPath(), args, stdinText, onLine);
        };
        const QByteArray realHome = qgetenv("HOME");
        qputenv("HOME", QFile::encodeName(m_support->filePath("home")));
        QDir().mkpath(m_support->filePath("home"));
        const auto restoreHome = qScopeGuard([&] { qputenv("HOME", realHome); });
        const QByteArray secret =
            "Old-" + QByteArray::number(QRandomGenerator::system()->generate64(), 36);
        const QByteArray next =
            "New-" + QByteArray::number(QRandomGenerator::system()->generate64(), 36);
        auto vault = makeVault();

        const auto createAndOpen = [&] {
            vault->createVault(secret);
            vault->unlock(secret);
        };
        QCOMPARE(processesHoldingDuring(secret, createAndOpen), QStringList());
        // Guessing costs more than with gocryptfs's own default of 2^16.
        const QJsonDocument config =
            QJsonDocument::fromJson(readFile(vault->bundlePath() + "/gocryptfs.conf"));
        QVERIFY(config["ScryptObject"]["N"].toInt() > 1 << 16);
        QCOMPARE(testsupport::processesHolding(secret), QStringList());
        fillWithMixedContent(mountPath(*vault));
        QCOMPARE(processesHoldingDuring(secret, [&] { vault->changePassword(secret, next); }),
                 QStringList());
        const auto backUp = [&] {
            vault->backupVault(QUrl::fromLocalFile(m_support->filePath("backup.7z")));
        };
        QCOMPARE(processesHoldingDuring(next, backUp), QStringList());
        vault->lock();
        QVERIFY(!VaultManagerTestAccess::remembersPassword(*vault));
        for (const QByteArray& password : {secret, next}) {
            QCOMPARE(testsupport::processesHolding(password), QStringList());
            for (const QString& folder :
                 {m_support->path(), m_runtime->path(),
                  QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation),
                  QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation),
                  QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) + "/thumbnails"})
                QCOMPARE(testsupport::filesHolding(folder, password), QStringList());
        }
    }

    void aSecondEngineLeavesTheFirstsVaultOpen() {
        auto first = makeVault();
        first->createVault("pw");
        first->unlock("pw");
        QVERIFY(writeFile(mountPath(*first) + "/kept.txt", "still open"));
        auto second = makeVault();
        QVERIFY(!second->isUnlocked());
        QCOMPARE(testsupport::mountsBelow(m_runtime->path()), QStringList{mountPath(*first)});
        QCOMPARE(readFile(mountPath(*first) + "/kept.txt"), QByteArray("still open"));
        first->lock();
    }

    void aMountWhoseAppIsGoneIsDetachedAtStart_data() {
        QTest::addColumn<bool>("killDaemon");
        QTest::newRow("its gocryptfs still serving") << false;
        QTest::newRow("its gocryptfs killed too") << true;
    }
    void aMountWhoseAppIsGoneIsDetachedAtStart() {
        QFETCH(bool, killDaemon);
        QTemporaryDir desktop;
        qputenv("XDG_DATA_HOME", QFile::encodeName(desktop.path()));
        const auto restore = qScopeGuard([] { qunsetenv("XDG_DATA_HOME"); });
        VaultManager crashed(m_support->path(), testsupport::orphanedToolRunner());
        crashed.createVault("pw");
        crashed.unlock("pw");
        const QString mount = mountPath(crashed);
        QVERIFY(writeFile(mount + "/kept.txt", "survives"));
        const QByteArray seen = QUrl::fromLocalFile(mount + "/kept.txt").toEncoded();
        QVERIFY(writeFile(desktop.filePath("recently-used.xbel"),
                          "<xbel version=\"1.0\"><bookmark href=\"" + seen + "\"/></xbel>"));
        if (killDaemon) {
            for (const int pid : testsupport::gocryptfsDaemonsServing(m_support->path()))
                ::kill(pid, SIGKILL);
            QTRY_VERIFY(testsupport::gocryptfsDaemonsServing(m_support->path()).isEmpty());
        }

        auto restarted = makeVault();
        QVERIFY(!restarted->isUnlocked());
        QVERIFY(testsupport::mountsBelow(m_runtime->path()).isEmpty());
        QVERIFY(!QFileInfo::exists(mount));
        QVERIFY(!readFile(desktop.filePath("recently-used.xbel")).contains(seen));
        restarted->unlock("pw");
        QCOMPARE(readFile(mountPath(*restarted) + "/kept.txt"), QByteArray("survives"));
        restarted->lock();
    }

    void changePasswordKeepsTheFilesAndSwapsTheKey() {
        auto vault = makeVault();
        const QString first = "first password";
        const QString second = QString::fromUtf8("zweites Passwört ✓");
        vault->createVault(first);
        vault->unlock(first);
        fillWithMixedContent(mountPath(*vault));
        const auto before = treeOf(mountPath(*vault));

        vault->changePassword(first, second);
        QVERIFY(vault->isUnlocked());
        QCOMPARE(treeOf(mountPath(*vault)), before);
        // The same password again is a change like any other.
        vault->changePassword(second, second);
        vault->lock();

        QCOMPARE(errorOf([&] { vault->unlock(first); }),
                 QStringLiteral("Authentication failed."));
        vault->unlock(second);
        QCOMPARE(treeOf(mountPath(*vault)), before);
        vault->lock();
    }

    void backupOpensWithThePasswordAndHoldsEverything() {
        auto vault = makeVault();
        const QByteArray password = "backup pässword";
        vault->createVault(QString::fromUtf8(password));
        vault->unlock(QString::fromUtf8(password));
        fillWithMixedContent(mountPath(*vault));
        QVERIFY(QFile::link("notes ü.txt", mountPath(*vault) + "/link to notes"));
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
        QCOMPARE(m_tool.calls.last(),
                 (RecordingRunner::Call{{"create", "-encryption", "AES-256", "-stdinpass",
                                         "-srcfolder", mountPath(*vault), "-volname",
                                         "MorvantaVault", "-format", "UDZO", "-puppetstrings",
                                         "-ov", backup},
                                        QString::fromUtf8(password)}));
        QVERIFY(vault->isUnlocked());
        const auto run = extractBackup(backup, m_support->filePath("first"), password);
        QCOMPARE(run.status, 0);
        QCOMPARE(treeOf(m_support->filePath("first")), treeOf(mountPath(*vault)));

        // A second backup to the same file replaces the first rather than adding to it.
        QVERIFY(QFile::remove(mountPath(*vault) + "/notes ü.txt"));
        QVERIFY(writeFile(mountPath(*vault) + "/new.txt", "second"));
        vault->backupVault(QUrl::fromLocalFile(backup));
        QCOMPARE(extractBackup(backup, m_support->filePath("second"), password).status, 0);
        QCOMPARE(treeOf(m_support->filePath("second")), treeOf(mountPath(*vault)));
        QCOMPARE(QDir(m_support->path()).entryList({"*.partial-*"}), QStringList());

        const auto wrong = extractBackup(backup, m_support->filePath("wrong"), "not it");
        QVERIFY(wrong.status != 0);
        QCOMPARE(QDir(m_support->filePath("wrong")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
                 QStringList());
        vault->lock();
    }

    void aBackupThatDoesNotReadBackIsNotKept() {
        auto vault = makeVault();
        vault->createVault("pw");
        vault->unlock("pw");
        fillWithMixedContent(mountPath(*vault));
        const QString backup = m_support->filePath("MorvantaVault-Backup.7z");
        vault->backupVault(QUrl::fromLocalFile(backup));
        const QByteArray good = readFile(backup);

        qputenv("MORVANTA_TEST_DAMAGE_BACKUP", "1");
        const QString error = errorOf([&] { vault->backupVault(QUrl::fromLocalFile(backup)); });
        qunsetenv("MORVANTA_TEST_DAMAGE_BACKUP");
        QVERIFY2(error.startsWith("IO failed: morvanta-hdiutil: create failed - the backup could not be read back"),
                 qPrintable(error));
        QCOMPARE(readFile(backup), good);
        QCOMPARE(QDir(m_support->path()).entryList({"*.partial-*"}), QStringList());
        vault->lock();
    }

    void lockingClearsTheDesktopsTracesOfTheVault() {
        QTemporaryDir desktop;
        qputenv("XDG_CACHE_HOME", QFile::encodeName(desktop.filePath("cache")));
        qputenv("XDG_DATA_HOME", QFile::encodeName(desktop.filePath("data")));
        const auto restore = qScopeGuard([] {
            qunsetenv("XDG_CACHE_HOME");
            qunsetenv("XDG_DATA_HOME");
        });
        auto vault = makeVault();
        vault->createVault("pw");
        vault->unlock("pw");
        const QString inside = QUrl::fromLocalFile(mountPath(*vault) + "/Holiday photo.jpg").toString(QUrl::FullyEncoded);
        const QString outside = QUrl::fromLocalFile(m_support->filePath("public.jpg")).toString(QUrl::FullyEncoded);

        // Thumbnails as GNOME (short text chunks) and KDE (compressed ones) write them.
        QDir().mkpath(desktop.filePath("cache/thumbnails/normal"));
        QDir().mkpath(desktop.filePath("cache/thumbnails/fail/gnome-thumbnail-factory"));
        const QStringList thumbnails{"cache/thumbnails/normal/in.png", "cache/thumbnails/fail/gnome-thumbnail-factory/in.png",
                                     "cache/thumbnails/normal/out.png"};
        for (const QString& name : thumbnails) {
            QImage image(8, 8, QImage::Format_ARGB32);
            image.fill(Qt::red);
            image.setText("Thumb::URI", name.contains("/out") ? outside : inside);
            QVERIFY(image.save(desktop.filePath(name), "png"));
        }
        QVERIFY(writeFile(desktop.filePath("cache/thumbnails/normal/plain.png"), pngWithText("tEXt", inside.toLatin1())));
        QVERIFY(writeFile(desktop.filePath("cache/thumbnails/normal/intl.png"),
                          pngWithText("iTXt", QByteArray(3, '\0') + QByteArray(1, '\0') + inside.toUtf8())));
        QDir().mkpath(desktop.filePath("data/RecentDocuments"));
        QVERIFY(writeFile(desktop.filePath("data/RecentDocuments/in.desktop"),
                          "[Desktop Entry]\nType=Link\nURL[$e]=" + inside.toUtf8() + "\nURL=" + inside.toUtf8() + "\n"));
        QVERIFY(writeFile(desktop.filePath("data/recently-used.xbel"),
                          "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<xbel version=\"1.0\">"
                          "<bookmark href=\"" + inside.toUtf8() + "\" added=\"2026-01-01T00:00:00Z\"><info/></bookmark>"
                          "<bookmark href=\"" + outside.toUtf8() + "\" added=\"2026-01-01T00:00:00Z\"><info/></bookmark>"
                          "</xbel>"));

        vault->lock();

        QVERIFY(!QFileInfo::exists(desktop.filePath(thumbnails[0])));
        QVERIFY(!QFileInfo::exists(desktop.filePath(thumbnails[1])));
        QVERIFY(QFileInfo::exists(desktop.filePath(thumbnails[2])));
        QVERIFY(!QFileInfo::exists(desktop.filePath("cache/thumbnails/normal/plain.png")));
        QVERIFY(!QFileInfo::exists(desktop.filePath("cache/thumbnails/normal/intl.png")));
        QVERIFY(!QFileInfo::exists(desktop.filePath("data/RecentDocuments/in.desktop")));
        const QByteArray recent = readFile(desktop.filePath("data/recently-used.xbel"));
        QVERIFY2(!recent.contains("Holiday") && recent.contains("public.jpg"), recent.constData());
    }

private:
};

QTEST_GUILESS_MAIN(TestVaultLifecycle)
#include "tst_vaultlifecycle.moc"
