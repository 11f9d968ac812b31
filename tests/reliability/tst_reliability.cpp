// Morvanta under faults (full file systems, a tool or the whole app killed part-way, a mount
// that disappears), odd passwords, and with its secrets. After each fault,
// nothing of the user's is lost (every file is whole at its place or in the vault, byte for
// byte), the registry still reads, and the app starts locked.

#include "engine/VaultManager.h"
#include "platform/Hardening.h"
#include "platform/Process.h"
#include "support/Errors.h"
#include "support/FuseHarness.h"
#include "support/Trees.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <csignal>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using testsupport::errorOf;
using testsupport::fillUp;
using testsupport::readFile;
using testsupport::treeOf;
using testsupport::writeFile;

namespace {

bool registryReads(const QString& vaultRoot) {
    QFile file(vaultRoot + "/.morvanta-origins.json");
    if (!file.exists())
        return true;
    return file.open(QIODevice::ReadOnly) && QJsonDocument::fromJson(file.readAll()).isObject();
}

} // namespace

class TestReliability : public QObject {
    Q_OBJECT

    std::unique_ptr<testsupport::ScopedRuntimeDir> m_runtime;
    std::unique_ptr<QTemporaryDir> m_home;

    QString home(const QString& name) const { return m_home->filePath(name); }
    QString support() const { return home(".support"); }
    std::unique_ptr<VaultManager> startApp() {
        return std::make_unique<VaultManager>(support(), testsupport::fastToolRunner());
    }
    std::unique_ptr<VaultManager> newUnlockedVault() {
        auto vault = startApp();
        vault->createVault("pw");
        vault->unlock("pw");
        return vault;
    }
    QString root(const VaultManager& vault) const { return vault.mountPoint().toLocalFile(); }

    // Starts the stand-in app and waits until it has the vault open.
    std::unique_ptr<QProcess> startDriver(const QStringList& job) {
        auto driver = std::make_unique<QProcess>();
        driver->start(QCoreApplication::applicationDirPath() + "/engine-driver", QStringList{support()} + job);
        if (!driver->waitForStarted() || !driver->waitForReadyRead(10000) ||
            !driver->readLine().startsWith("ready"))
            return nullptr;
        return driver;
    }

    // What every fault must leave: a locked start with no mount, and every file of `before`
    // whole either where it was or in the vault.
    void verifyNothingLost(const QString& original, const QMap<QString, QByteArray>& before) {
        auto restarted = startApp();
        QVERIFY(!restarted->isUnlocked());
        QVERIFY(testsupport::mountsBelow(m_runtime->path()).isEmpty());
        restarted->unlock("pw");
        QVERIFY(registryReads(root(*restarted)));
        QVERIFY(QDir(root(*restarted))
                    .entryList({".morvanta-staging-*"}, QDir::AllEntries | QDir::Hidden)
                    .isEmpty());
        const auto outside = treeOf(original);
        const auto inside = treeOf(root(*restarted) + '/' + QFileInfo(original).fileName());
        for (auto it = before.cbegin(); it != before.cend(); ++it) {
            const bool whole = outside.value(it.key()) == it.value() || inside.value(it.key()) == it.value();
            QVERIFY2(!it.value().startsWith("file") || whole, qPrintable(it.key() + " was lost"));
        }
        restarted->lock();
    }

private slots:
    void init() {
        REQUIRE_FUSE();
        m_runtime = std::make_unique<testsupport::ScopedRuntimeDir>();
        m_home = std::make_unique<QTemporaryDir>();
    }
    void cleanup() {
        m_home.reset();
        m_runtime.reset();
    }

    void theMountDisappearsUnderTheApp() {
        auto vault = newUnlockedVault();
        const QString mount = root(*vault);
        QVERIFY(writeFile(mount + "/kept.txt", "kept"));

        const QUrl backup = QUrl::fromLocalFile(home("backup.7z"));
        vault->backupVault(backup);
        const QByteArray goodBackup = readFile(backup.toLocalFile());

        // Unmounted from outside: the folder left behind is plain, and nothing may go there,
        // nor may an archive of it replace the last backup.
        QCOMPARE(platform::runProcess("/usr/bin/fusermount3", {"-u", mount.toStdString()}, {}).status, 0);
        QCOMPARE(errorOf([&] { vault->backupVault(backup); }), "Vault not mounted.");
        QCOMPARE(readFile(backup.toLocalFile()), goodBackup);
        QVERIFY(!QFileInfo::exists(mount));
        QVERIFY(writeFile(home("next.txt"), "next"));
        QCOMPARE(errorOf([&] { vault->addItem(QUrl::fromLocalFile(home("next.txt"))); }),
                 "Vault not mounted.");
        QCOMPARE(readFile(home("next.txt")), QByteArray("next"));
        QVERIFY(!vault->isUnlocked());

        // Its gocryptfs killed: the same, and the dead mount is cleared away.
        vault->unlock("pw");
        QCOMPARE(readFile(root(*vault) + "/kept.txt"), QByteArray("kept"));
        for (const QString& pid : QDir("/proc").entryList(QDir::Dirs)) {
            if (readFile("/proc/" + pid + "/cmdline").contains(QFile::encodeName(support())))
                ::kill(pid.toInt(), SIGKILL);
        }
        QTRY_VERIFY(!QFileInfo(root(*vault) + "/kept.txt").exists());
        QCOMPARE(errorOf([&] { vault->renameItem(QUrl::fromLocalFile(root(*vault) + "/kept.txt"), "x"); }),
                 "Vault not mounted.");
        QVERIFY(testsupport::mountsBelow(m_runtime->path()).isEmpty());
    }

    // With the support folder full, a backup leaves the last one as it was and a password
    // change keeps the old password.
    void aFullFileSystemKeepsTheLastBackupAndThePassword() {
        if (::geteuid() != 0)
            QSKIP("needs root to mount a small file system");
        testsupport::ScopedTmpfs small(support(), "size=2m");
        QVERIFY(small.mounted());
        auto vault = newUnlockedVault();
        QVERIFY(writeFile(root(*vault) + "/notes.txt", "notes"));
        const QUrl backup = QUrl::fromLocalFile(support() + "/MorvantaVault-Backup.7z");
        vault->backupVault(backup);
        const QByteArray first = readFile(backup.toLocalFile());
        fillUp(support());

        QVERIFY(errorOf([&] { vault->backupVault(backup); }).startsWith("IO failed: "));
        QCOMPARE(readFile(backup.toLocalFile()), first);
        QCOMPARE(QDir(support()).entryList({"*.partial-*"}, QDir::Files | QDir::Hidden), QStringList());
        const QString error = errorOf([&] { vault->changePassword("pw", "new password"); });
        QVERIFY2(error.startsWith("IO failed: Password change failed: "), qPrintable(error));
        QVERIFY(vault->isUnlocked());
        QCOMPARE(readFile(root(*vault) + "/notes.txt"), QByteArray("notes"));
        vault->lock();
        QFile::remove(support() + "/filler");
        vault->unlock("pw");
        vault->lock();
    }

    void theToolKilledDuringAttachLeavesNothingOpen() {
        {
            auto vault = newUnlockedVault();
            QVERIFY(writeFile(root(*vault) + "/inside.txt", "inside"));
            vault->lock();
        }
        for (const int delay : {0, 2, 5, 10, 20, 40}) {
            // The tool dies after `delay` ms, and with it the shell that stands for the app:
            // gocryptfs, its child, may or may not have mounted.
            VaultManager vault(support(), [delay](const QStringList& args, const auto& input, const auto&) {
                QProcess tool;
                tool.setChildProcessModifier([] { ::setpgid(0, 0); });
                tool.start("/bin/sh", QStringList{"-c", "\"$0\" \"$@\"; exit $?",
                                                  testsupport::fastToolPath()} +
                                          args);
                tool.waitForStarted();
                if (input)
                    tool.write(input->toUtf8());
                tool.closeWriteChannel();
                QThread::msleep(delay);
                ::kill(-pid_t(tool.processId()), SIGKILL);
                tool.waitForFinished();
                return HDIUtilResult{tool.exitStatus() == QProcess::CrashExit ? 128 + SIGKILL : tool.exitCode(),
                                     QString::fromUtf8(tool.readAllStandardOutput()),
                                     QString::fromUtf8(tool.readAllStandardError())};
            });
            const QString error = errorOf([&] { vault.unlock("pw"); });
            QVERIFY(error == "Authentication failed." || vault.isUnlocked());

            auto restarted = startApp();
            QVERIFY2(testsupport::mountsBelow(m_runtime->path()).isEmpty(), qPrintable(QString::number(delay)));
            restarted->unlock("pw");
            QCOMPARE(readFile(root(*restarted) + "/inside.txt"), QByteArray("inside"));
            restarted->lock();
        }
    }

    void aTerminationSignalDuringAnAddLocksAndLosesNothing() {
        newUnlockedVault()->lock();
        QVERIFY(writeFile(home("film.mkv"), QByteArray(16 << 20, 'f')));
        auto driver = startDriver({"add-slowly", home("film.mkv")});
        QVERIFY(driver);
        QVERIFY(driver->waitForReadyRead(10000));
        QCOMPARE(driver->readLine().trimmed(), "copying");
        ::kill(pid_t(driver->processId()), SIGTERM);
        QVERIFY(driver->waitForFinished(10000));
        QCOMPARE(driver->exitStatus(), QProcess::NormalExit);
        // Locked on the way out, with the add rolled back.
        QVERIFY(testsupport::mountsBelow(m_runtime->path()).isEmpty());
        QCOMPARE(readFile(home("film.mkv")), QByteArray(16 << 20, 'f'));
        auto restarted = startApp();
        restarted->unlock("pw");
        QCOMPARE(QDir(root(*restarted)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
                 QStringList());
        restarted->lock();
    }

    void theAppKilledAtEveryStepOfAnAddLosesNothing() {
        // Before every file operation of an add, and once more after the original's removal.
        for (int step = 0; step <= 8; ++step) {
            cleanup();
            init();
            newUnlockedVault()->lock();
            QDir().mkpath(home("Letters/old"));
            QVERIFY(writeFile(home("Letters/old/1990.txt"), QByteArray(50000, 'l')));
            QVERIFY(writeFile(home("Letters/today.txt"), "today"));
            const auto files = treeOf(home("Letters"));
            auto driver = startDriver({"add", home("Letters"), QString::number(step)});
            QVERIFY(driver);
            driver->waitForFinished();
            QCOMPARE(driver->exitStatus(), QProcess::CrashExit);
            verifyNothingLost(home("Letters"), files);
        }
    }

    void theAppKilledDuringARenameLosesNothing() {
        {
            auto vault = newUnlockedVault();
            QVERIFY(writeFile(home("Report"), "the report"));
            vault->addItem(QUrl::fromLocalFile(home("Report")));
            vault->lock();
        }
        auto driver = startDriver({"rename", "Report"});
        QVERIFY(driver);
        QThread::msleep(300);
        ::kill(pid_t(driver->processId()), SIGKILL);
        driver->waitForFinished();

        auto restarted = startApp();
        QVERIFY(!restarted->isUnlocked());
        restarted->unlock("pw");
        QVERIFY(registryReads(root(*restarted)));
        QVERIFY(QDir(root(*restarted))
                    .entryList({".morvanta-staging-*"}, QDir::AllEntries | QDir::Hidden)
                    .isEmpty());
        QCOMPARE(restarted->items().size(), 1);
        QCOMPARE(readFile(root(*restarted) + '/' + restarted->items().first().name), QByteArray("the report"));
        restarted->lock();
    }

    // Every printable character, controls other than a line feed, and near the length limit.
    void longAndOddPasswordsWork() {
        QString password = "\r\t" + QString(900, QChar(0x00e9));
        for (char c = ' '; c <= '~'; ++c)
            password += QLatin1Char(c);
        auto vault = startApp();
        vault->createVault(password);
        vault->unlock(password);
        QVERIFY(writeFile(root(*vault) + "/x.txt", "x"));
        vault->backupVault(QUrl::fromLocalFile(home("backup.7z")));
        vault->changePassword(password, password + "!");
        vault->lock();
        QCOMPARE(errorOf([&] { vault->unlock(password); }), "Authentication failed.");
        vault->unlock(password + "!");
        QCOMPARE(readFile(root(*vault) + "/x.txt"), QByteArray("x"));
        vault->lock();
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

        // The tool hardens itself too: its limits show while it waits for its input.
        newUnlockedVault()->lock();
        QProcess tool;
        tool.start(testsupport::shippedToolPath(),
                   {"attach", "-stdinpass", "-plist", support() + "/vault.gocryptfs"});
        QVERIFY(tool.waitForStarted());
        QTRY_VERIFY(readFile(QStringLiteral("/proc/%1/limits").arg(tool.processId()))
                        .simplified()
                        .contains("Max core file size 0 0 bytes"));
        tool.closeWriteChannel();
        tool.waitForFinished();
    }

};

QTEST_GUILESS_MAIN(TestReliability)
#include "tst_reliability.moc"
