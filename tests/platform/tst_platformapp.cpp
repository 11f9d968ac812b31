// The desktop seams of the application: the persisted disguise setting, finding the running
// instance from a second launch, locking it from the command line, and locking when the user
// leaves (against a private message bus with stand-ins for logind and the screensaver).

#include "app/CommandLine.h"
#include "engine/VaultManager.h"
#include "platform/SessionWatcher.h"
#include "platform/Settings.h"
#include "platform/SingleInstance.h"
#include "platform/hdiutil/Mounts.h"
#include "support/FuseHarness.h"
#include "support/Trees.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QFileInfo>
#include <QMutex>
#include <QProcess>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <poll.h>
#include <unistd.h>

namespace {

// The real `morvanta` with `arguments`, while this process goes on answering its socket: its
// exit status, and what it wrote to stderr.
int morvanta(const QStringList& arguments, QByteArray* err = nullptr,
             const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment()) {
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationDirPath() + "/morvanta", arguments);
    if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 60000))
        process.kill();
    process.waitForFinished();
    if (err)
        *err = process.readAllStandardError();
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

const QString kSessionPath = QStringLiteral("/org/freedesktop/login1/session/_3");

// logind as far as Morvanta uses it, answering from a thread of its own as the real one
// answers from its own process. Each inhibitor is a pipe: the test keeps the read end and
// sees the inhibitor released when it reads end-of-file.
class FakeLogind : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

public:
    QStringList inhibitRequests() const {
        QMutexLocker locker(&m_mutex);
        return m_requests;
    }
    // Whether the holder still holds the last inhibitor handed out.
    bool inhibitorHeld() const {
        QMutexLocker locker(&m_mutex);
        pollfd fd{m_readEnd.fileDescriptor(), POLLIN, 0};
        return ::poll(&fd, 1, 0) == 0;
    }

public slots:
    QDBusUnixFileDescriptor Inhibit(const QString& what, const QString& who, const QString& why,
                                    const QString& mode) {
        QMutexLocker locker(&m_mutex);
        m_requests.append(QStringList{what, who, why, mode}.join('|'));
        int fds[2];
        if (::pipe(fds) != 0)
            return {};
        m_readEnd.giveFileDescriptor(fds[0]);
        QDBusUnixFileDescriptor handed;
        handed.giveFileDescriptor(fds[1]);
        return handed;
    }
    QDBusObjectPath GetSessionByPID(uint) { return QDBusObjectPath(kSessionPath); }

private:
    mutable QMutex m_mutex;
    QStringList m_requests;
    QDBusUnixFileDescriptor m_readEnd;
};

} // namespace

class TestPlatformApp : public QObject {
    Q_OBJECT

private slots:
    // Undisguised until chosen; a choice is written where the next start reads it, at once.
    void disguiseSettingStartsAsNoneAndPersists() {
        QTemporaryDir dir;
        const QString path = dir.filePath("Morvanta.conf");
        platform::Settings settings(std::make_unique<QSettings>(path, QSettings::IniFormat));
        QCOMPARE(settings.disguiseMode(), "none");
        settings.setDisguiseMode("math");
        QVERIFY(testsupport::readFile(path).contains("disguiseMode=math")); // on disk at once
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

    // `morvanta --lock` (or `-lock`) in a second process: the running instance locks its real vault and
    // says so; a failed lock comes back as one line and a non-zero status; nobody running, or
    // a vault locked already, is success. Plain `morvanta` with no display fails likewise,
    // not with Qt's abort.
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
        QCOMPARE(morvanta({"-lock"}), 0);
        QVERIFY(!vault.isUnlocked());
        QCOMPARE(testsupport::mountsBelow(runtime.path()), QStringList());
        QCOMPARE(morvanta({"--lock"}), 0);

        running.setLockHandler([] { return QStringLiteral("Unmount failed:\nresource busy"); });
        QByteArray err;
        QCOMPARE(morvanta({"--lock"}, &err), 1);
        QCOMPARE(err, "morvanta: Could not lock the vault: Unmount failed: resource busy\n");

        QProcessEnvironment noDisplay = QProcessEnvironment::systemEnvironment();
        for (const char* name : {"WAYLAND_DISPLAY", "WAYLAND_SOCKET", "DISPLAY", "QT_QPA_PLATFORM"})
            noDisplay.remove(name);
        QCOMPARE(morvanta({}, &err, noDisplay), 1);
        QVERIFY2(err.startsWith("morvanta: No display") && err.count('\n') == 1, err);
    }

    // The app locks on the spot when asked (a direct connection): what holds while the
    // request is out holds while the vault locks.
    void asksForALockBeforeSleepAndWhenTheScreenLocks() {
        QProcess bus;
        bus.start("dbus-daemon", {"--session", "--nofork", "--print-address=1"});
        QVERIFY2(bus.waitForStarted(), "dbus-daemon is not installed");
        QVERIFY(bus.waitForReadyRead(10000));
        const QString address = QString::fromUtf8(bus.readLine()).trimmed();
        const auto connection = [&](const QString& name) { return QDBusConnection::connectToBus(address, name); };
        FakeLogind logind;
        QThread logindThread;
        QVERIFY(connection("logind").registerService("org.freedesktop.login1"));
        QVERIFY(connection("logind").registerObject("/org/freedesktop/login1", &logind,
                                                    QDBusConnection::ExportAllSlots));
        logind.moveToThread(&logindThread);
        logindThread.start();
        const auto stop = qScopeGuard([&] {
            logindThread.quit();
            logindThread.wait();
            bus.kill();
            bus.waitForFinished();
        });
        // Every signal carries a flag: the session's Lock takes none, and ignores it.
        const auto emitSignal = [&](const QString& path, const QString& interface, const QString& name, bool on) {
            QVERIFY(connection("logind").send(QDBusMessage::createSignal(path, interface, name) << on));
        };
        platform::SessionWatcher watcher(connection("system"), connection("session"));
        int asked = 0;
        bool heldWhenAsked = false;
        QObject::connect(&watcher, &platform::SessionWatcher::lockRequested, this, [&] {
            ++asked;
            heldWhenAsked = logind.inhibitorHeld();
        });
        QCOMPARE(logind.inhibitRequests(),
                 QStringList{"sleep|Morvanta|Lock the vault before sleeping|delay"});
        QVERIFY(logind.inhibitorHeld());

        // The machine sleeps only once the vault is locked, and is ready for the next sleep.
        const QString manager = "org.freedesktop.login1.Manager";
        emitSignal("/org/freedesktop/login1", manager, "PrepareForSleep", true);
        QTRY_COMPARE(asked, 1);
        QVERIFY2(heldWhenAsked, "the machine was let sleep before the vault locked");
        QTRY_VERIFY(!logind.inhibitorHeld());
        emitSignal("/org/freedesktop/login1", manager, "PrepareForSleep", false);
        QTRY_COMPARE(logind.inhibitRequests().size(), 2);
        QTRY_VERIFY(watcher.holdsSleepInhibitor());

        // Our session's lock and either screensaver turning on; not another session's lock,
        // nor a screensaver turning off.
        const struct {
            QString path, interface, name;
            bool active;
            bool locks;
        } cases[] = {{kSessionPath, "org.freedesktop.login1.Session", "Lock", true, true},
                     {"/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver", "ActiveChanged", true, true},
                     {"/org/gnome/ScreenSaver", "org.gnome.ScreenSaver", "ActiveChanged", true, true},
                     {"/org/freedesktop/login1/session/_9", "org.freedesktop.login1.Session", "Lock", true, false},
                     {"/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver", "ActiveChanged", false, false}};
        for (const auto& c : cases) {
            const int before = asked;
            emitSignal(c.path, c.interface, c.name, c.active);
            QTest::qWait(50);
            QTRY_COMPARE(asked, before + int(c.locks));
        }
    }
};

QTEST_MAIN(TestPlatformApp)
#include "tst_platformapp.moc"
