// The application's window: the router alone (which screen each state gives, the window's
// size and title), then the whole window offscreen against real vaults: first start to an
// open vault and closing the window with it open, both lock screens from the keyboard alone,
// and what the desktop sees of the disguise, and which lock screen it gives, as it changes.

#include "app/RootRouter.h"
#include "lockscreens/DisguiseMode.h"
#include "lockscreens/MathQuiz.h"
#include "support/AppWindow.h"
#include "support/RecordingRunner.h"

#include <QAccessible>
#include <QDir>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using testsupport::AppWindow;

namespace {

void pressThroughAccessibility(QQuickItem* item) {
    QAccessible::queryAccessibleInterface(item)->actionInterface()->doAction(
        QAccessibleActionInterface::pressAction());
}

// The text change notices that get past the application's filter to the platform.
QStringList g_textNotices;

// Hands a notice of typing `text` into the field to the application's filter, as Qt does
// while a screen reader listens; what reaches the platform of it.
QStringList noticesOfTyping(QQuickItem* field, const QString& text) {
    g_textNotices.clear();
    QAccessibleTextInsertEvent notice(field->property("entry").value<QObject*>(), 0, text);
    const QAccessible::UpdateHandler filter = QAccessible::installUpdateHandler(nullptr);
    QAccessible::installUpdateHandler(filter);
    filter(&notice);
    return g_textNotices;
}

HDIUtilResult attached() { return RecordingRunner::attached("/mnt/vault"); }

} // namespace

class TestAppWindow : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        // Stands for the platform behind the application's own accessibility filter.
        QAccessible::installUpdateHandler([](QAccessibleEvent* event) {
            if (event->type() == QAccessible::TextInserted)
                g_textNotices << static_cast<QAccessibleTextInsertEvent*>(event)->textInserted();
        });
    }
    void init() { QTest::failOnWarning(QRegularExpression(".*")); }

    void firstStartToAnOpenVaultThenClosing() {
        REQUIRE_FUSE();
        testsupport::ScopedRuntimeDir runtime;
        AppWindow app(testsupport::fastToolRunner());
        QCOMPARE(app.screenName(), "WelcomeView");
        QCOMPARE(app.window()->minimumSize(), QSize(520, 420));
        app.keys({Qt::Key_Tab}); // nothing else to go to: the focus stays, and shows its ring
        QVERIFY(app.item("forwardButton")->property("visualFocus").toBool());
        app.keys({Qt::Key_Return});
        pressThroughAccessibility(app.item("forwardButton"));
        app.click("forwardButton");
        QTRY_COMPARE(app.screenName(), "SetupView");

        app.typeInto("passwordField", "Correct horse 1");
        QVERIFY(!app.item("createButton")->isEnabled());
        // A dimmed button refuses a screen reader's press as it refuses a click.
        pressThroughAccessibility(app.item("createButton"));
        QVERIFY(!app.item("errorLine")->isVisible());
        app.keys({Qt::Key_Return});
        QTRY_VERIFY(app.item("confirmField")->hasActiveFocus());
        app.typeInto("confirmField", "Correct horse 1");
        app.click("createButton");
        QTRY_COMPARE(app.screenName(), "VaultView");
        QCOMPARE(testsupport::mountsBelow(runtime.path()).size(), 1);

        // Closing the window detaches the vault.
        QVERIFY(app.window()->close());
        QVERIFY(!app.vault().isUnlocked());
        QVERIFY(testsupport::mountsBelow(runtime.path()).isEmpty());
    }

    // Both lock screens from the keyboard alone, over a vault whose password is a number with
    // spaces around it. A wrong password is cleared and the field has the focus again. A quiz
    // answer is first tried as the password; one that does not open is graded, the box has the
    // focus again, and nothing on screen speaks of a vault, a password or a failure. Notices of
    // typing reach the platform as bullets, and none at all from the answer box.
    void theLockScreensFromTheKeyboard() {
        REQUIRE_FUSE();
        testsupport::ScopedRuntimeDir runtime;
        AppWindow app(testsupport::fastToolRunner());
        app.vault().createVault(" 1234 ");
        QTRY_COMPARE(app.screenName(), "StandardUnlockView");
        QTRY_VERIFY(app.item("passwordField")->hasActiveFocus());
        QCOMPARE(noticesOfTyping(app.item("passwordField"), "secret"), QStringList(QString(6, QChar(0x2022))));
        // Typed into whatever has the focus, then Tab to the button and Space.
        app.type("1234");
        app.keys({Qt::Key_Tab});
        QTRY_VERIFY(app.item("unlockButton")->hasActiveFocus());
        app.keys({Qt::Key_Space});
        QTRY_VERIFY(app.item("errorLine")->isVisible());
        QCOMPARE(app.text("passwordField"), QString());
        QTRY_VERIFY(app.item("passwordField")->hasActiveFocus());
        app.type(" 1234 ");
        app.keys({Qt::Key_Return});
        QTRY_VERIFY(app.vault().isUnlocked());

        app.vault().lock();
        app.settings().setDisguiseMode("math");
        QTRY_COMPARE(app.screenName(), "MathQuizUnlockView");
        QTRY_VERIFY(app.item("answerField")->hasActiveFocus());
        auto* quiz = app.screen()->property("quiz").value<MathQuiz*>();
        QCOMPARE(app.text("question"), quiz->question());
        QCOMPARE(noticesOfTyping(app.item("answerField"), "1234"), QStringList());
        app.type(QString::number(quiz->expectedAnswer() + 1));
        app.keys({Qt::Key_Tab});
        QTRY_VERIFY(app.item("submitButton")->hasActiveFocus());
        app.keys({Qt::Key_Space});
        QTRY_VERIFY(app.item("messageLine")->isVisible());
        QVERIFY(!quiz->correct());
        QTRY_VERIFY(app.item("answerField")->hasActiveFocus());
        for (const QString& text : app.visibleTexts()) {
            QVERIFY2(!text.contains("ault") && !text.contains("assword") && !text.contains("failed") &&
                         !text.contains("Authentication"),
                     qPrintable(text));
        }
        app.type(" 1234 ");
        app.keys({Qt::Key_Return});
        QTRY_VERIFY(app.vault().isUnlocked());
    }

    // Taskbars, window switchers and screen readers learn only the disguise, from the first
    // frame on and after every change of it; the lock screen changes with it at once.
    void theDesktopSeesOnlyTheDisguise() {
        RecordingRunner tool;
        AppWindow app(tool.runner(), "math");
        QCOMPARE(app.window()->title(), windowTitle("math"));
        QVERIFY(QDir().mkpath(app.vault().bundlePath()));
        QTRY_COMPARE(app.screenName(), "MathQuizUnlockView");
        QAccessibleInterface* application = QAccessible::queryAccessibleInterface(qApp);
        QList<QImage> icons;
        for (const QString disguise : {"math", "neutral", "none"}) {
            app.settings().setDisguiseMode(disguise);
            QCOMPARE(app.screenName(), disguise == "math" ? "MathQuizUnlockView" : "StandardUnlockView");
            const QString name = windowTitle(disguise);
            QTRY_COMPARE(app.window()->title(), name);
            QCOMPARE(QGuiApplication::applicationDisplayName(), name);
            QCOMPARE(application->text(QAccessible::Name), name);
            const bool branded = disguise == "none";
            QCOMPARE(QGuiApplication::desktopFileName() == "morvanta", branded);
            QCOMPARE(application->text(QAccessible::Description).contains("vault"), branded);
            QCOMPARE(app.visibleTexts().join('\n').contains("vault", Qt::CaseInsensitive), branded);
            icons << app.window()->icon().pixmap(32).toImage();
        }
        QVERIFY(icons[0] != icons[2] && icons[1] != icons[2] && icons[0] != icons[1]);
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

QTEST_MAIN(TestAppWindow)
#include "tst_appwindow.moc"
