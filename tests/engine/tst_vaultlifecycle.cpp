// The vault's whole life against real gocryptfs on FUSE, through the disk-image tool.

#include "engine/VaultManager.h"
#include "support/FuseHarness.h"
#include "support/RecordingRunner.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <csignal>
#include <thread>

class VaultManagerTestAccess {
public:
    static bool remembersPassword(const VaultManager& vault) {
        return vault.m_unlockedPassword.has_value();
    }
};

namespace {

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

bool writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

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

// The gocryptfs daemons serving any vault below `folder`.
QList<int> gocryptfsDaemonsFor(const QString& folder) {
    QList<int> pids;
    for (const QString& pid : QDir("/proc").entryList(QDir::Dirs)) {
        const QByteArray cmdline = readFile("/proc/" + pid + "/cmdline");
        if (pid.toInt() > 0 && cmdline.startsWith("/usr/bin/gocryptfs") &&
            cmdline.contains(QFile::encodeName(folder)))
            pids.append(pid.toInt());
    }
    return pids;
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

    void wrongPasswordStaysLocked() {
        auto vault = makeVault();
        vault->createVault("right one");
        m_tool.calls.clear();
        try {
            vault->unlock("wrong one");
            QFAIL("unlocked with a wrong password");
        } catch (const VaultError& error) {
            QCOMPARE(error.errorDescription(), "Authentication failed.");
        }
        QVERIFY(!vault->isUnlocked());
        QVERIFY(vault->mountPoint().isEmpty());
        QVERIFY(!VaultManagerTestAccess::remembersPassword(*vault));
        QVERIFY(testsupport::mountsBelow(m_runtime->path()).isEmpty());
        QCOMPARE(m_tool.calls.size(), 1);
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

        QCOMPARE(thrownBy(*vault, &VaultManager::lock), QStringLiteral("Vault not mounted."));

        vault->unlock("pw");
        QCOMPARE(readFile(mountPath(*vault) + "/open.bin"), QByteArray("written before the lock"));
        vault->lock();
    }

    void refusalsRunNothing() {
        auto vault = makeVault();
        QCOMPARE(thrownBy(*vault, [](VaultManager& v) { v.unlock("pw"); }),
                 QStringLiteral("Vault not initialized."));
        vault->createVault("pw");
        m_tool.calls.clear();
        QCOMPARE(thrownBy(*vault, [](VaultManager& v) { v.createVault("other"); }),
                 QStringLiteral("Vault already exists."));
        QVERIFY(m_tool.calls.isEmpty());
        // The first vault is untouched: its password still opens it.
        vault->unlock("pw");
        vault->lock();
    }

    void passwordStaysOffCommandLinesEnvironmentsAndDisk() {
        // The shipped tool, with its real key derivation: the slower it is, the longer a
        // leaked password would be visible.
        m_tool.passThrough = [](const QStringList& args, const std::optional<QString>& stdinText) {
            return runHDIUtilProgram(testsupport::shippedToolPath(), args, stdinText);
        };
        const QByteArray secret =
            "Secret-" + QByteArray::number(QRandomGenerator::system()->generate64(), 36);
        auto vault = makeVault();

        QCOMPARE(processesHoldingDuring(secret, [&] { vault->createVault(secret); }),
                 QStringList());
        QCOMPARE(processesHoldingDuring(secret, [&] { vault->unlock(secret); }), QStringList());
        QVERIFY(vault->isUnlocked());
        QCOMPARE(testsupport::processesHolding(secret), QStringList());
        for (const QString& folder : {m_support->path(), m_runtime->path(), QDir::tempPath()})
            QCOMPARE(testsupport::filesHolding(folder, secret), QStringList());
        vault->lock();
        QVERIFY(!VaultManagerTestAccess::remembersPassword(*vault));
    }

    void aMountLeftByACrashIsDetachedAtStart() {
        auto crashed = makeVault();
        crashed->createVault("pw");
        crashed->unlock("pw");
        const QString mount = mountPath(*crashed);
        QVERIFY(writeFile(mount + "/kept.txt", "survives"));
        // The app dies here without locking; a new start builds a new engine.
        auto restarted = makeVault();
        QVERIFY(!restarted->isUnlocked());
        QVERIFY(testsupport::mountsBelow(m_runtime->path()).isEmpty());
        QVERIFY(!QFileInfo::exists(mount + "/kept.txt"));

        restarted->unlock("pw");
        QCOMPARE(readFile(mountPath(*restarted) + "/kept.txt"), QByteArray("survives"));
        restarted->lock();
    }

    void aDeadMountIsDetachedAtStart() {
        auto crashed = makeVault();
        crashed->createVault("pw");
        crashed->unlock("pw");
        const QList<int> daemons = gocryptfsDaemonsFor(m_support->path());
        QCOMPARE(daemons.size(), 1);
        ::kill(daemons.first(), SIGKILL);
        QTRY_VERIFY(gocryptfsDaemonsFor(m_support->path()).isEmpty());
        QCOMPARE(testsupport::mountsBelow(m_runtime->path()).size(), 1);

        auto restarted = makeVault();
        QVERIFY(!restarted->isUnlocked());
        QVERIFY(testsupport::mountsBelow(m_runtime->path()).isEmpty());
        restarted->unlock("pw");
        QVERIFY(restarted->isUnlocked());
        restarted->lock();
    }

private:
    template <typename Operation>
    static QString thrownBy(VaultManager& vault, Operation operation) {
        try {
            std::invoke(operation, vault);
        } catch (const VaultError& error) {
            return error.errorDescription();
        }
        return QStringLiteral("<nothing thrown>");
    }
};

QTEST_GUILESS_MAIN(TestVaultLifecycle)
#include "tst_vaultlifecycle.moc"
