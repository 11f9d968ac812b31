// Every screen in every disguise and state, loaded in the real window and saved as a PNG
// under build/screenshots/ for a person to look at. Loading each one with QML warnings made
// fatal also makes this the smoke test that every screen's imports and bindings resolve, and
// each lock and first-run screen is read as a screen reader reads it.

#include "browser/VaultBrowser.h"
#include "lockscreens/MathQuiz.h"
#include "support/Accessibility.h"
#include "support/AppWindow.h"
#include "support/FileLayers.h"
#include "support/RecordingRunner.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSemaphore>
#include <QTest>

using testsupport::AppWindow;

namespace {

HDIUtilResult failure(const QString& message) {
    return {1, {}, message};
}

// Waits out the page and colour animations so the picture shows the settled screen.
void settle() {
    QTest::qWait(350);
}

} // namespace

class TestScreenshots : public QObject {
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(".*")); }

    // The three pages, then the smallest window the screens must fit: they scroll rather
    // than clip.
    void welcomePagesAndTheSmallestWindow() {
        RecordingRunner tool;
        AppWindow app(tool.runner());
        QCOMPARE(app.screenName(), "WelcomeView");
        for (int page = 1; page <= 3; ++page) {
            settle();
            QVERIFY(app.screenshot(QStringLiteral("welcome-page%1").arg(page)));
            QCOMPARE(testsupport::accessibilityProblems(app.window()).join("; "), QString());
            if (page < 3)
                app.click("forwardButton");
        }
        // The forward button starts with the focus but without the ring; Tab moves to Back,
        // its ring shows, and goes with the focus.
        QVERIFY(app.item("forwardButton")->hasActiveFocus() &&
                !app.item("forwardButton")->property("visualFocus").toBool());
        app.keys({Qt::Key_Tab});
        QTRY_VERIFY(app.item("backButton")->property("visualFocus").toBool());
        QVERIFY(app.screenshot("welcome-page3-keyboard-focus"));
        app.keys({Qt::Key_Tab});
        QTRY_VERIFY(!app.item("backButton")->property("visualFocus").toBool());
        QVERIFY(app.text("forwardButton").contains("Get Started"));

        app.window()->resize(520, 420);
        QTRY_COMPARE(app.item("rootView")->height(), 420.0);
        app.click("backButton");
        settle();
        QVERIFY(app.screenshot("small-welcome-page2"));
        app.click("forwardButton");
        app.click("forwardButton");
        QTRY_COMPARE(app.screenName(), "SetupView");
        app.item("passwordField")->setProperty("text", "Abcdefg1");
        app.item("confirmField")->setProperty("text", "Abcdefg");
        QVERIFY(app.screenshot("small-setup"));
    }

    // Each screen that takes the password: as it opens, filled in (for setup, at each level
    // of the strength meter), with the keyboard on its button, checking, and refused.
    void lockScreens_data() {
        QTest::addColumn<QString>("disguise");
        QTest::addColumn<QString>("screen");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("button");
        for (const char* disguise : {"none", "neutral", "math"})
            QTest::addRow("setup-%s", disguise) << disguise << "SetupView" << "passwordField"
                                                << "Abcdefgh1!Abcdefgh" << "createButton";
        for (const char* disguise : {"none", "neutral"})
            QTest::addRow("unlock-%s", disguise) << disguise << "StandardUnlockView" << "passwordField"
                                                 << "not the password" << "unlockButton";
        QTest::newRow("quiz") << "math" << "MathQuizUnlockView" << "answerField" << "4711" << "submitButton";
    }
    void lockScreens() {
        QFETCH(QString, disguise);
        QFETCH(QString, screen);
        QFETCH(QString, field);
        QFETCH(QString, typed);
        QFETCH(QString, button);
        const QString shot = QTest::currentDataTag();
        const bool setup = screen == "SetupView";
        RecordingRunner tool;
        AppWindow app(tool.runner(), disguise);
        if (!setup)
            QVERIFY(QDir().mkpath(app.vault().bundlePath()));
        app.item("rootView")->property("router").value<QObject*>()->setProperty("hasSeenWelcome", true);
        QTRY_COMPARE(app.screenName(), screen);
        settle();
        QVERIFY(app.screenshot(shot + "-idle", true));

        if (setup) {
            int level = 0;
            for (const char* password : {"abc", "abcdefgh", "Abcdefg1", "Abcdefg1!", "Abcdefgh1!Abcdefgh"}) {
                app.item("passwordField")->setProperty("text", password);
                app.item("confirmField")->setProperty("text", password);
                QVERIFY(app.screenshot(shot + "-level" + QString::number(level++)));
            }
            app.item("confirmField")->setProperty("text", "Abcdefgh1!Abcdefg");
            QVERIFY(app.screenshot(shot + "-mismatch"));
            app.item("confirmField")->setProperty("text", typed);
        }
        app.item(field)->setProperty("text", typed);
        QCOMPARE(testsupport::accessibilityProblems(app.window(), {typed}).join("; "), QString());
        app.tabTo(button);
        QTRY_VERIFY(app.item(button)->property("visualFocus").toBool());
        QVERIFY(app.screenshot(shot + "-keyboard-focus"));
        tool.replies = {failure(setup ? "morvanta-hdiutil: create failed - No space left on device."
                                      : "morvanta-hdiutil: attach failed - Password incorrect.")};
        app.click(button);
        QVERIFY(app.screenshot(shot + "-busy"));
        QTRY_VERIFY(app.shown(field == "answerField" ? "messageLine" : "errorLine"));
        QVERIFY(app.screenshot(shot + "-error"));
        QCOMPARE(testsupport::accessibilityProblems(app.window()).join("; "), QString());

        if (auto* quiz = app.screen()->property("quiz").value<MathQuiz*>()) {
            app.item(field)->setProperty("text", QString::number(quiz->expectedAnswer()));
            tool.replies = {failure("morvanta-hdiutil: attach failed - Password incorrect.")};
            app.click(button);
            QTRY_VERIFY(quiz->correct());
            QVERIFY(app.screenshot("quiz-graded-correct"));
        }
    }

    // The vault browser over a real vault: empty, then a dozen items of mixed kinds and
    // sizes, with each banner, menu, confirmation, sheet and progress strip in turn.
    void vaultBrowser() {
        REQUIRE_FUSE();
        // A backup tells of 42 % done and then waits to be let go, for its picture.
        QSemaphore backupHeld, backupGoes;
        testsupport::VaultWindow v("correct horse", [&, tool = testsupport::fastToolRunner()](
                                                        const QStringList& args, const auto& input,
                                                        const HDIUtilOutputLine& onLine) {
            if (args.contains("-puppetstrings")) {
                onLine("PERCENT:42");
                backupHeld.release();
                backupGoes.acquire();
            }
            return tool(args, input, onLine);
        });
        AppWindow& app = v.app;
        // A picture of the screen as it settles, then the popup on it closed if asked.
        auto shot = [&app](const QString& name, bool thenClose = false) {
            settle();
            QVERIFY(app.screenshot(name));
            if (thenClose) {
                app.keys({Qt::Key_Escape});
                settle();
            }
        };
        QTRY_COMPARE(app.screenName(), "VaultView");
        QTRY_COMPARE(app.window()->size(), QSize(800, 635));
        shot("browser-empty");

        for (const auto& [name, size] : QList<std::pair<QString, qint64>>{
                 {"Tax Return 2023.pdf", 1843200}, {"Passport scan.jpg", 734003}, {"notes.txt", 842},
                 {"Budget 2024.ods", 51234}, {"Board presentation.odp", 9876543},
                 {"Old projects.zip", 123456789}, {"interview.mp3", 4567890}, {"backup-keys.sh", 1},
                 {"Contract draft.docx", 23456}, {"recovery codes", 0}})
            v.added(name, size);
        v.file("Family Photos/2019/beach.png", 2500000);
        v.file("Family Photos/cat.png", 800000);
        QDir().mkpath(v.home.filePath("Client Files"));
        for (const char* folder : {"Family Photos", "Client Files"})
            app.vault().addItem(QUrl::fromLocalFile(v.home.filePath(folder)));
        shot("browser-items");

        // Sorted by size, largest first, with a row selected and its menu open.
        VaultBrowser* browser = v.browser();
        app.click("header.Size");
        settle();
        app.click("header.Size");
        browser->setSelection(v.inVault("Tax Return 2023.pdf"));
        shot("browser-sorted-selected");
        app.click("actionsButton");
        shot("browser-actions-menu", true);
        app.click("gearButton");
        shot("browser-gear-menu", true);

        // Where the keyboard is: the selected row, a button, a menu entry.
        app.item("itemTable")->forceActiveFocus(Qt::TabFocusReason);
        app.keys({Qt::Key_Down});
        shot("browser-focus-row");
        app.item("gearButton")->forceActiveFocus(Qt::TabFocusReason);
        shot("browser-focus-button");
        app.keys({Qt::Key_Space, Qt::Key_Down});
        shot("browser-focus-menu", true);

        // A failure and a success, each as the action leaves it.
        app.panels().openAnswers = {QList<QUrl>{v.file("again/notes.txt")}};
        app.click("addButton");
        QTRY_VERIFY(!browser->error().isEmpty());
        shot("browser-error-banner");
        browser->chooseRowMenuEntry("rename", v.inVault("notes.txt"));
        shot("browser-rename-prompt");
        app.typeInto("renameField", "Shopping list");
        app.keys({Qt::Key_Return});
        QTRY_VERIFY(!browser->success().isEmpty());
        shot("browser-success-banner");

        browser->setSelection(v.inVault("Passport scan.jpg"));
        browser->setConfirmRestore(true);
        shot("browser-restore-confirmation", true);
        browser->setSelection(v.inVault("Family Photos"));
        browser->setConfirmDelete(true);
        shot("browser-delete-confirmation", true);

        browser->setShowPasswordChange(true);
        app.typeInto("oldPasswordField", "not it");
        app.typeInto("newPasswordField", "new password");
        app.typeInto("confirmPasswordField", "new password");
        app.click("changePasswordButton");
        QTRY_VERIFY(app.shown("passwordErrorLine"));
        shot("browser-password-sheet", true);
        browser->setShowAbout(true);
        shot("browser-about-sheet", true);

        app.drag({QUrl::fromLocalFile(v.home.filePath("Family Photos"))}, false);
        shot("browser-drop-overlay");
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(app.window(), &leave);

        // An add under way, held at its first chunk: the progress strip, and its Cancel.
        app.vault().setFileLayer(std::make_shared<GatedFileLayer>());
        const QUrl film = v.file("Holiday film.mkv", 24 << 20);
        app.panels().openAnswers = {QList<QUrl>{film}};
        app.click("addButton");
        QTRY_VERIFY(app.shown("progressStrip"));
        shot("browser-progress-add");
        app.click("cancelWorkButton");
        QTRY_VERIFY(!app.vault().isWorking());
        QVERIFY(QFileInfo::exists(film.toLocalFile()) && !QFileInfo::exists(v.inVault("Holiday film.mkv").toLocalFile()));
        QVERIFY(browser->error().isEmpty());

        // A backup under way, then written where the person chose, and said so.
        const QString backup = v.home.filePath("MorvantaVault-Backup.7z");
        app.panels().saveAnswers = {QUrl::fromLocalFile(backup)};
        app.choose("gearButton", "gear.backup");
        QTRY_VERIFY(backupHeld.available() > 0 && app.shown("progressStrip"));
        QCOMPARE(app.text("progressText").remove(u'\u27E6').remove(u'\u27E7'),
                 "\u201CMorvantaVault-Backup.7z\u201D \u2014 42%");
        QVERIFY(!app.find("progressBar")->property("indeterminate").toBool());
        shot("browser-progress-backup");
        backupGoes.release();
        QTRY_VERIFY(!app.vault().isWorking());
        QVERIFY(app.shown("successBanner") && QFileInfo::exists(backup));

        // The smallest window still shows every part.
        app.window()->resize(520, 420);
        QTRY_COMPARE(app.item("rootView")->height(), 420.0);
        shot("browser-small");
    }
};

QTEST_MAIN(TestScreenshots)
#include "tst_screenshots.moc"
