// The desktop seams of the application: the persisted disguise setting, finding the
// running instance from a second launch, and locking it from the command line.

#include "app/CommandLine.h"
#include "engine/VaultManager.h"
#include "platform/Settings.h"
#include "platform/SingleInstance.h"
#include "platform/hdiutil/Mounts.h"
#include "support/FuseHarness.h"
#include "support/Trees.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

// The real `morvanta` with `arguments`, while this process goes on answering its socket: its
// exit status, and what it wrote to stderr.
int morvanta(const QStringList& arguments, QByteArray* err = nullptr) {
    QProcess process;
    process.start(QCoreApplication::applicationDirPath() + "/morvanta", arguments);
    if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 60000))
        process.kill();
    process.waitForFinished();
    if (err)
        *err = process.readAllStandardError();
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

} // namespace

class TestPlatformApp : public QObject {
    Q_OBJECT

private slots:
    // Undisguised until chosen; a choice is kept where the next start reads it.
    void disguiseSettingStartsAsNoneAndPersists() {
        QTemporaryDir dir;
        const QString path = dir.filePath("Morvanta.conf");
        platform::Settings settings(std::make_unique<QSettings>(path, QSettings::IniFormat));
        QCOMPARE(settings.disguiseMode(), "none");
        settings.setDisguiseMode("math");
        QCOMPARE(QSettings(path, QSettings::IniFormat).value("disguiseMode").toString(), "math");
    }

    void aSecondLaunchWakesTheFirst_data() {
        QTest::addColumn<QByteArray>("runtimeDir");
        QTest::newRow("runtime folder set") << QByteArray("scoped");
        QTest::newRow("no runtime folder") << QByteArray();
        QTest::newRow("a relative one") << QByteArray("run/user");
    }
    void aSecondLaunchWakesTheFirst() {
        QFETCH(QByteArray, runtimeDir);
        testsupport::ScopedRuntimeDir runtime;
        QTemporaryDir tmp;
        const auto restore =
            qScopeGuard([previous = qgetenv("TMPDIR")] { qputenv("TMPDIR", previous); });
        qputenv("TMPDIR", QFile::encodeName(tmp.path()));
        if (runtimeDir != "scoped")
            qputenv("XDG_RUNTIME_DIR", runtimeDir);
        platform::SingleInstance first(QStringLiteral("morvanta-test"));
        QVERIFY(first.isPrimary());
        // In the user's private folder where the tool mounts, whatever the environment lacks.
        std::string error;
        QCOMPARE(QFileInfo(first.socketPath()).path(),
                 QString::fromStdString(hdiutil::privateMountRoot(error)));
        QSignalSpy woken(&first, &platform::SingleInstance::activationRequested);

        platform::SingleInstance second(QStringLiteral("morvanta-test"));
        QVERIFY(!second.isPrimary());
        QTRY_COMPARE(woken.count(), 1);

        // A socket file nobody listens on, as a killed launch leaves it, is taken over.
        const QString stale = platform::SingleInstance(QStringLiteral("crashed")).socketPath();
        QVERIFY(testsupport::writeFile(stale, {}));
        platform::SingleInstance restarted(QStringLiteral("crashed"));
        QVERIFY(restarted.isPrimary() && !platform::SingleInstance(QStringLiteral("crashed")).isPrimary());
    }

    // `morvanta --lock` in a second process: the running instance locks its real vault and
    // says so; a failed lock comes back as one line and a non-zero status; nobody running, or
    // a vault locked already, is success.
    void theCommandLineLocksTheRunningInstance() {
        REQUIRE_FUSE();
        testsupport::ScopedRuntimeDir runtime;
        QTemporaryDir home;
        VaultManager vault(home.filePath("support"), testsupport::fastToolRunner());
        vault.createVault("pw");
        vault.unlock("pw");
        QCOMPARE(morvanta({"--lock"}), 0);
        QVERIFY(vault.isUnlocked());
        platform::SingleInstance running;
        QVERIFY(running.isPrimary());
        running.setLockHandler([&vault] { return lockForCommandLine(vault); });
        QCOMPARE(morvanta({"--lock"}), 0);
        QVERIFY(!vault.isUnlocked());
        QCOMPARE(testsupport::mountsBelow(runtime.path()), QStringList());
        QCOMPARE(morvanta({"--lock"}), 0);

        running.setLockHandler([] { return QStringLiteral("Unmount failed:\nresource busy"); });
        QByteArray err;
        QCOMPARE(morvanta({"--lock"}, &err), 1);
        QCOMPARE(err, "morvanta: could not lock the vault: Unmount failed: resource busy\n");
    }
};

QTEST_MAIN(TestPlatformApp)
#include "tst_platformapp.moc"
