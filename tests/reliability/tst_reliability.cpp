// Morvanta under faults (the app killed or terminated part-way, a mount that disappears),
// and with its secrets. After each fault, nothing of the user's is lost (every file is whole
// at its place or in the vault, byte for byte), the registry still reads, and the app starts
// locked.

#include "platform/Hardening.h"
#include "platform/Process.h"
#include "support/Errors.h"
#include "support/Trees.h"
#include "support/VaultTestCase.h"

#include <QDir>
#include <QJsonDocument>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace testsupport;

class TestReliability : public VaultTestCase {
    Q_OBJECT

    QString support() const { return home(".support"); }
    QString root() const { return m_vault->mountPoint().toLocalFile(); }

    // Starts the stand-in app and waits until it has the vault open.
    std::unique_ptr<QProcess> startDriver(const QStringList& job) {
        m_vault->lock();
        auto driver = std::make_unique<QProcess>();
        driver->start(QCoreApplication::applicationDirPath() + "/engine-driver", QStringList{support()} + job);
        if (!driver->waitForStarted() || !driver->waitForReadyRead(10000) ||
            !driver->readLine().startsWith("ready"))
            return nullptr;
        return driver;
    }

    // What every fault must leave: a locked start with no mount, and a vault that opens with
    // a registry that reads and no half-made copy.
    void restartAndUnlock() {
        m_vault = std::make_unique<VaultManager>(support(), testsupport::fastToolRunner());
        m_vault->detachStaleMounts();
        QVERIFY(!m_vault->isUnlocked());
        QVERIFY(testsupport::mountsBelow(m_runtime->path()).isEmpty());
        m_vault->unlock("pw");
        QFile registry(inVault(".morvanta-origins.json"));
        QVERIFY(!registry.exists() || (registry.open(QIODevice::ReadOnly) &&
                                       QJsonDocument::fromJson(registry.readAll()).isObject()));
        QCOMPARE(QDir(root()).entryList({".morvanta-staging-*"}, QDir::AllEntries | QDir::Hidden), QStringList());
    }

private slots:
    void theMountDisappearsUnderTheApp() {
        const QString mount = root();
        QVERIFY(writeFile(mount + "/kept.txt", "kept"));
        const QUrl backup = url(home("backup.7z"));
        m_vault->backupVault(backup);
        const QByteArray goodBackup = readFile(backup.toLocalFile());

        // Unmounted from outside: the folder left behind is plain, and nothing may go there,
        // nor may an archive of it replace the last backup.
        QCOMPARE(platform::runProcess("/usr/bin/fusermount3", {"-u", mount.toStdString()}, {}).status, 0);
        QCOMPARE(errorOf([&] { m_vault->backupVault(backup); }), "Vault not mounted.");
        QCOMPARE(readFile(backup.toLocalFile()), goodBackup);
        QVERIFY(!QFileInfo::exists(mount));
        QVERIFY(writeFile(home("next.txt"), "next"));
        QCOMPARE(errorOf([&] { m_vault->addItem(url(home("next.txt"))); }), "Vault not mounted.");
        QCOMPARE(readFile(home("next.txt")), QByteArray("next"));
        QVERIFY(!m_vault->isUnlocked());

        // Its gocryptfs killed: the same, and the dead mount is cleared away.
        m_vault->unlock("pw");
        QCOMPARE(readFile(inVault("kept.txt")), QByteArray("kept"));
        for (const int pid : testsupport::gocryptfsDaemonsServing(support()))
            ::kill(pid, SIGKILL);
        QTRY_VERIFY(!QFileInfo(inVault("kept.txt")).exists());
        QCOMPARE(errorOf([&] { m_vault->renameItem(url(inVault("kept.txt")), "x"); }), "Vault not mounted.");
        QVERIFY(testsupport::mountsBelow(m_runtime->path()).isEmpty());
    }

    void aTerminationSignalDuringAnAddLocksAndLosesNothing() {
        QVERIFY(writeFile(home("film.mkv"), QByteArray(16 << 20, 'f')));
        auto driver = startDriver({"add-held", home("film.mkv")});
        QVERIFY(driver);
        QTRY_VERIFY_WITH_TIMEOUT(driver->canReadLine(), 10000); // it may have come with "ready"
        QCOMPARE(driver->readLine().trimmed(), "copying");
        ::kill(pid_t(driver->processId()), SIGTERM);
        QVERIFY(driver->waitForFinished(10000));
        QCOMPARE(driver->exitStatus(), QProcess::NormalExit);
        // Locked on the way out (not by the next start), with the add rolled back.
        QVERIFY(testsupport::mountsBelow(m_runtime->path()).isEmpty());
        QCOMPARE(readFile(home("film.mkv")), QByteArray(16 << 20, 'f'));
        restartAndUnlock();
        QCOMPARE(QDir(root()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden), QStringList());
    }

    void theAppKilledAtEveryStepOfAnAddLosesNothing() {
        // Before every file operation of an add, and once more after the original's removal.
        for (int step = 0; step <= 8; ++step) {
            cleanup();
            init();
            QDir().mkpath(home("Letters/old"));
            QVERIFY(writeFile(home("Letters/old/1990.txt"), QByteArray(50000, 'l')));
            QVERIFY(writeFile(home("Letters/today.txt"), "today"));
            const auto files = treeOf(home("Letters"));
            auto driver = startDriver({"add", home("Letters"), QString::number(step)});
            QVERIFY(driver);
            driver->waitForFinished();
            QCOMPARE(driver->exitStatus(), QProcess::CrashExit);
            // Every file whole, where it was or in the vault.
            restartAndUnlock();
            const auto outside = treeOf(home("Letters")), inside = treeOf(inVault("Letters"));
            for (auto it = files.cbegin(); it != files.cend(); ++it) {
                const bool whole = outside.value(it.key()) == it.value() || inside.value(it.key()) == it.value();
                QVERIFY2(!it.value().startsWith("file") || whole, qPrintable(it.key() + " was lost"));
            }
        }
    }

    void processesThatHoldThePasswordKeepItToThemselves() {
        // In a child, so that this test process keeps its own settings.
        const pid_t child = ::fork();
        if (child == 0) {
            platform::hardenProcess();
            rlimit core{};
            ::getrlimit(RLIMIT_CORE, &core);
            ::_exit(core.rlim_cur == 0 && core.rlim_max == 0 && ::prctl(PR_GET_DUMPABLE) == 0 ? 0 : 1);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFEXITED(status) && WEXITSTATUS(status) == 0);

        // The tool hardens itself too: its limits show while it waits for a password.
        QProcess tool;
        tool.start(testsupport::shippedToolPath(), {"create", "-encryption", "AES-256", "-stdinpass", home("v")});
        QTRY_VERIFY(readFile(QStringLiteral("/proc/%1/limits").arg(tool.processId()))
                        .simplified()
                        .contains("Max core file size 0 0 bytes"));
        tool.closeWriteChannel();
        tool.waitForFinished();
    }
};

QTEST_GUILESS_MAIN(TestReliability)
#include "tst_reliability.moc"
