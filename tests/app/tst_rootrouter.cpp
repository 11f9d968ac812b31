// The router without the screens: which screen each state gives, the lock screen each
// disguise gives, and the window's size and title, which follow the state and the disguise
// once the event loop turns.

#include "app/RootRouter.h"
#include "app/UnlockChooser.h"
#include "lockscreens/DisguiseMode.h"
#include "support/RecordingRunner.h"

#include <QDir>
#include <QQuickWindow>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

HDIUtilResult attached() { return RecordingRunner::attached("/mnt/vault"); }

} // namespace

class TestRootRouter : public QObject {
    Q_OBJECT

private slots:
    void lockScreenForDisguise() {
        using L = UnlockChooser::LockScreen;
        QCOMPARE(UnlockChooser::lockScreenFor("neutral"), L::Neutral);
        QCOMPARE(UnlockChooser::lockScreenFor("math"), L::MathQuiz);
        QCOMPARE(UnlockChooser::lockScreenFor("calculator"), L::Branded);
    }

    // The router follows the engine and the disk with nobody telling it, and sizes and names
    // the app's own window, and no other, by state and disguise.
    void followsTheVaultThroughItsLife() {
        QTemporaryDir support;
        RecordingRunner tool;
        VaultManager vault(support.path(), tool.runner());
        QWindow other;
        other.resize(123, 45);
        other.setTitle("other");
        QQuickWindow window;
        window.resize(300, 200);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        RootRouter router;
        router.setVault(&vault);
        router.setDisguiseRaw("neutral");
        router.componentComplete();
        QSignalSpy changes(&router, &RootRouter::screenChanged);
        QCOMPARE(router.screen(), RootRouter::Screen::Welcome);
        QTRY_COMPARE(window.size(), QSize(600, 600));
        QTRY_COMPARE(window.title(), windowTitle("neutral"));
        const QRect available = window.screen()->availableGeometry();
        QVERIFY(qAbs(window.frameGeometry().center().x() - available.center().x()) <= 1);

        // Made by other means while the welcome pages show.
        QVERIFY(QDir().mkpath(vault.bundlePath()));
        QTRY_COMPARE(router.screen(), RootRouter::Screen::Unlock);
        QVERIFY(QDir(vault.bundlePath()).removeRecursively());
        QTRY_COMPARE(router.screen(), RootRouter::Screen::Welcome);
        router.setHasSeenWelcome(true);
        QCOMPARE(router.screen(), RootRouter::Screen::Setup);
        // A creation whose opening failed: setup stays, to show why.
        QVERIFY(QDir().mkpath(vault.bundlePath()));
        QTest::qWait(100);
        QCOMPARE(router.screen(), RootRouter::Screen::Setup);

        tool.replies = {attached()};
        vault.unlock("password");
        QCOMPARE(router.screen(), RootRouter::Screen::Browser);
        QTRY_COMPARE(window.size(), QSize(800, 635));
        // The disguise holds in every state.
        QCOMPARE(window.title(), windowTitle("neutral"));
        router.setDisguiseRaw("math");
        QTRY_COMPARE(window.title(), windowTitle("math"));
        // The window going locks the vault.
        router.contentDisappearing();
        QCOMPARE(router.screen(), RootRouter::Screen::Unlock);
        QTRY_COMPARE(window.size(), QSize(600, 600));
        QCOMPARE(tool.argLists().last(), QStringList({"detach", "/mnt/vault"}));
        QCOMPARE(other.size(), QSize(123, 45));
        QCOMPARE(other.title(), "other");
        // Deleted while locked: back to the first-run screens.
        QVERIFY(QDir(vault.bundlePath()).removeRecursively());
        QTRY_COMPARE(router.screen(), RootRouter::Screen::Setup);
        QCOMPARE(changes.count(), 6);

        // A lock at close that cannot detach, plainly or by force, is swallowed.
        QVERIFY(QDir().mkpath(vault.bundlePath()));
        tool.replies = {attached(), {1, {}, "busy"}, {1, {}, "still busy"}, {1, {}, ""}};
        tool.calls.clear();
        vault.unlock("password");
        router.contentDisappearing();
        QVERIFY(vault.isUnlocked());
        QCOMPARE(tool.calls.size(), 4);
    }
};

QTEST_MAIN(TestRootRouter)
#include "tst_rootrouter.moc"
