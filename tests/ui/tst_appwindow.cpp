// The whole window offscreen against real vaults (gocryptfs through the disk-image tool):
// first start to an open vault, both lock screens with right and wrong passwords from the
// keyboard alone, the disguise switched while locked and what the desktop sees of it, and
// closing the window with the vault open.

#include "lockscreens/DisguiseMode.h"
#include "support/AppWindow.h"
#include "support/FuseHarness.h"
#include "support/RecordingRunner.h"

#include <QAccessible>
#include <QRegularExpression>
#include <QTest>
#include <QtQml/QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(MorvantaPlugin)
Q_IMPORT_QML_PLUGIN(Morvanta_LockScreensPlugin)
Q_IMPORT_QML_PLUGIN(Morvanta_BrowserPlugin)

using testsupport::AppWindow;

namespace {

// The fast tool, counting the unlock attempts that reach it.
HDIUtilRunner countingRunner(int& attaches) {
    return [&attaches, fast = testsupport::fastToolRunner()](const QStringList& args,
                                                             const std::optional<QString>& in,
                                                             const HDIUtilOutputLine& onLine) {
        if (args.value(0) == QLatin1String("attach"))
            ++attaches;
        return fast(args, in, onLine);
    };
}

void pressThroughAccessibility(QQuickItem* item) {
    QAccessible::queryAccessibleInterface(item)->actionInterface()->doAction(
        QAccessibleActionInterface::pressAction());
}

// The text change notices that get past the application's filter to the platform.
QStringList g_textNotices;

// Hands a notice to the application's filter as Qt does while a screen reader listens.
void notify(QAccessibleEvent* event) {
    const QAccessible::UpdateHandler filter = QAccessible::installUpdateHandler(nullptr);
    QAccessible::installUpdateHandler(filter);
    filter(event);
}

// Whether anything on screen speaks of a vault.
bool vaultMentioned(const AppWindow& app) {
    return app.visibleTexts().join('\n').contains("vault", Qt::CaseInsensitive);
}

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

    void firstStartLeadsToAnOpenVault() {
        REQUIRE_FUSE();
        testsupport::ScopedRuntimeDir runtime;
        AppWindow app(testsupport::fastToolRunner());
        QCOMPARE(app.screenName(), "WelcomeView");
        QTRY_COMPARE(app.window()->size(), QSize(600, 600));
        QCOMPARE(app.window()->minimumSize(), QSize(520, 420));
        app.click("forwardButton");
        pressThroughAccessibility(app.item("forwardButton"));
        app.click("forwardButton");
        QTRY_COMPARE(app.screenName(), "SetupView");

        app.typeInto("passwordField", "Correct horse 1");
        QVERIFY(!app.item("createButton")->isEnabled());
        // A dimmed button refuses a screen reader's press as it refuses a click.
        pressThroughAccessibility(app.item("createButton"));
        QVERIFY(!app.item("errorLine")->isVisible());
        QTest::keyClick(app.window(), Qt::Key_Return);
        QTRY_VERIFY(app.item("confirmField")->hasActiveFocus());
        app.typeInto("confirmField", "Correct horse 1");
        QVERIFY(app.item("createButton")->isEnabled());
        app.click("createButton");

        QTRY_VERIFY(app.vault().isUnlocked());
        QTRY_COMPARE(app.screenName(), "VaultView");
        QTRY_COMPARE(app.window()->size(), QSize(800, 635));
        QCOMPARE(testsupport::mountsBelow(runtime.path()).size(), 1);
    }

    void wrongPasswordThenTheRightOneFromTheKeyboard() {
        REQUIRE_FUSE();
        testsupport::ScopedRuntimeDir runtime;
        int attaches = 0;
        AppWindow app(countingRunner(attaches));
        app.vault().createVault("  spaced secret  ");
        QTRY_COMPARE(app.screenName(), "StandardUnlockView");
        QTRY_VERIFY(app.item("passwordField")->hasActiveFocus());
        // A notice of typing reaches the platform with bullets for the characters.
        g_textNotices.clear();
        QAccessibleTextInsertEvent notice(app.item("passwordField"), 0, "secret");
        notify(&notice);
        QCOMPARE(g_textNotices.value(0), QString(6, QChar(0x2022)));

        // Typed into whatever has the focus, then Tab to the button and Space.
        app.type("spaced secret");
        QTest::keyClick(app.window(), Qt::Key_Tab);
        QTRY_VERIFY(app.item("unlockButton")->hasActiveFocus());
        QTest::keyClick(app.window(), Qt::Key_Space);
        QTRY_VERIFY(app.item("errorLine")->isVisible());
        QCOMPARE(app.item("passwordField")->property("text").toString(), QString());
        QVERIFY(app.item("unlockButton")->isEnabled());
        QVERIFY(!app.vault().isUnlocked());
        QTRY_VERIFY(app.item("passwordField")->hasActiveFocus());

        app.type("  spaced secret  ");
        QTest::keyClick(app.window(), Qt::Key_Return);
        QTRY_VERIFY(app.vault().isUnlocked());
        QCOMPARE(attaches, 2);
    }

    // Every answer is first tried as the password; only what does not open is graded.
    void theQuizTriesThenGrades() {
        REQUIRE_FUSE();
        testsupport::ScopedRuntimeDir runtime;
        int attaches = 0;
        AppWindow app(countingRunner(attaches), "math");
        app.vault().createVault(" 1234 ");
        QTRY_COMPARE(app.screenName(), "MathQuizUnlockView");
        QTRY_VERIFY(app.item("answerField")->hasActiveFocus());
        QObject* quiz = app.screen()->property("quiz").value<QObject*>();
        QVERIFY(quiz);
        const QString question = app.item("question")->property("text").toString();
        QCOMPARE(question, quiz->property("question").toString());
        const qint64 a = quiz->property("a").toLongLong();
        const qint64 b = quiz->property("b").toLongLong();
        const QString op = question.section(' ', 1, 1);
        const qint64 answer = op == "+" ? a + b : op == "\u2212" ? a - b : a * b;

        // The answer box's notices of typing never reach the platform at all.
        g_textNotices.clear();
        QAccessibleTextInsertEvent notice(app.item("answerField"), 0, "1234");
        notify(&notice);
        QCOMPARE(g_textNotices, QStringList());

        app.typeInto("answerField", QStringLiteral(" %1 ").arg(answer));
        app.click("submitButton");
        QTRY_VERIFY(app.item("messageLine")->isVisible());
        QVERIFY(quiz->property("correct").toBool());
        QCOMPARE(app.item("answerField")->property("text").toString(), QString());

        // From the keyboard: Tab to Submit and Space; the box has the focus again after.
        app.typeInto("answerField", "1235");
        QTest::keyClick(app.window(), Qt::Key_Tab);
        QTRY_VERIFY(app.item("submitButton")->hasActiveFocus());
        QTest::keyClick(app.window(), Qt::Key_Space);
        QTRY_COMPARE(attaches, 2);
        QTRY_VERIFY(!quiz->property("busy").toBool());
        QVERIFY(!quiz->property("correct").toBool());
        QTRY_VERIFY(app.item("answerField")->hasActiveFocus());
        QVERIFY(!app.vault().isUnlocked());
        // The disguise holds: nothing on screen speaks of a vault, a password or a failure.
        for (const QString& text : app.visibleTexts()) {
            QVERIFY2(!text.contains("ault") && !text.contains("assword") &&
                         !text.contains("failed") && !text.contains("Authentication"),
                     qPrintable(text));
        }
        // A numeric password still opens, as typed.
        app.typeInto("answerField", " 1234 ");
        QTest::keyClick(app.window(), Qt::Key_Return);
        QTRY_VERIFY(app.vault().isUnlocked());
        QTRY_COMPARE(app.window()->title(), windowTitle("math"));
    }

    void switchingTheDisguiseChangesScreenAndTitleAtOnce() {
        REQUIRE_FUSE();
        testsupport::ScopedRuntimeDir runtime;
        AppWindow app(testsupport::fastToolRunner());
        app.vault().createVault("password one");
        QTRY_COMPARE(app.screenName(), "StandardUnlockView");
        QVERIFY(vaultMentioned(app));

        app.settings().setDisguiseMode("neutral");
        QTRY_COMPARE(app.window()->title(), windowTitle("neutral"));
        QCOMPARE(app.screenName(), "StandardUnlockView");
        QVERIFY(!vaultMentioned(app));

        app.settings().setDisguiseMode("math");
        QTRY_COMPARE(app.window()->title(), windowTitle("math"));
        QCOMPARE(app.screenName(), "MathQuizUnlockView");
        app.typeInto("answerField", "12");

        app.settings().setDisguiseMode("neutral");
        QCOMPARE(app.screenName(), "StandardUnlockView");
        QCOMPARE(app.item("passwordField")->property("text").toString(), QString());

        app.settings().setDisguiseMode("something else");
        QTRY_COMPARE(app.window()->title(), windowTitle("none"));
        QVERIFY(vaultMentioned(app));

        // The disguised title stays once the vault is open.
        app.settings().setDisguiseMode("neutral");
        app.vault().unlock("password one");
        QTRY_COMPARE(app.window()->size(), QSize(800, 635));
        QCOMPARE(app.window()->title(), windowTitle("neutral"));
    }

    // Taskbars, window switchers and screen readers learn only the disguise, from the first
    // frame on and after every change of it.
    void theDesktopSeesOnlyTheDisguise() {
        RecordingRunner tool;
        AppWindow app(tool.runner(), "math");
        QCOMPARE(app.window()->title(), windowTitle("math"));
        QAccessibleInterface* application = QAccessible::queryAccessibleInterface(qApp);
        QList<QImage> icons;
        for (const QString disguise : {"math", "neutral", "none"}) {
            app.settings().setDisguiseMode(disguise);
            const QString name = windowTitle(disguise);
            QTRY_COMPARE(app.window()->title(), name);
            QCOMPARE(QGuiApplication::applicationDisplayName(), name);
            QCOMPARE(application->text(QAccessible::Name), name);
            const bool branded = disguise == "none";
            QCOMPARE(QGuiApplication::desktopFileName() == "morvanta", branded);
            QCOMPARE(application->text(QAccessible::Description).contains("vault"), branded);
            icons << app.window()->icon().pixmap(32).toImage();
        }
        QVERIFY(icons[0] != icons[2] && icons[1] != icons[2] && icons[0] != icons[1]);
    }

    void closingTheWindowDetachesTheVault() {
        REQUIRE_FUSE();
        testsupport::ScopedRuntimeDir runtime;
        AppWindow app(testsupport::fastToolRunner());
        app.vault().createVault("password two");
        app.vault().unlock("password two");
        QCOMPARE(testsupport::mountsBelow(runtime.path()).size(), 1);
        QVERIFY(app.window()->close());
        QVERIFY(!app.vault().isUnlocked());
        QVERIFY(testsupport::mountsBelow(runtime.path()).isEmpty());
    }
};

QTEST_MAIN(TestAppWindow)
#include "tst_appwindow.moc"
