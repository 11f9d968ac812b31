// Every screen in every disguise and state, loaded in the real window and saved as a PNG
// under build/screenshots/ for a person to look at. Loading each one with QML warnings made
// fatal also makes this the smoke test that every screen's imports and bindings resolve, and
// each lock and first-run screen is read as a screen reader reads it.

#include "support/Accessibility.h"
#include "support/AppWindow.h"
#include "support/GatedFileLayer.h"
#include "support/FuseHarness.h"
#include "support/RecordingRunner.h"
#include "support/Trees.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QRegularExpression>
#include <QSemaphore>
#include <QTemporaryDir>
#include <QTest>
#include <QtQml/QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(MorvantaPlugin)
Q_IMPORT_QML_PLUGIN(Morvanta_LockScreensPlugin)
Q_IMPORT_QML_PLUGIN(Morvanta_BrowserPlugin)

using testsupport::AppWindow;

namespace {

const QString kMount = QStringLiteral("/run/user/1000/morvanta/MorvantaVault");

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

    const QStringList disguises{"none", "neutral", "math"};

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(".*")); }

    void welcomePages() {
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
        // From the keyboard: Tab moves to Back, and its focus ring shows.
        QTest::keyClick(app.window(), Qt::Key_Tab);
        QTRY_VERIFY(app.item("backButton")->property("visualFocus").toBool());
        QVERIFY(app.screenshot("welcome-page3-keyboard-focus"));
        QVERIFY(app.item("forwardButton")->property("text").toString().contains("Get Started"));
    }

    void setupScreen_data() {
        QTest::addColumn<QString>("disguise");
        for (const QString& disguise : disguises)
            QTest::newRow(qPrintable(disguise)) << disguise;
    }
    void setupScreen() {
        QFETCH(QString, disguise);
        RecordingRunner tool;
        AppWindow app(tool.runner(), disguise);
        app.click("forwardButton");
        app.click("forwardButton");
        app.click("forwardButton");
        QTRY_COMPARE(app.screenName(), "SetupView");
        settle();
        QVERIFY(app.screenshot("setup-" + disguise + "-empty"));

        const QList<std::pair<QString, QString>> levels = {
            {"0", "abc"},       {"1", "abcdefgh"},           {"2", "Abcdefg1"},
            {"3", "Abcdefg1!"}, {"4", "Abcdefgh1!Abcdefgh"},
        };
        for (const auto& [level, password] : levels) {
            app.item("passwordField")->setProperty("text", password);
            app.item("confirmField")->setProperty("text", password);
            QVERIFY(app.screenshot("setup-" + disguise + "-level" + level));
        }
        app.item("confirmField")->setProperty("text", "Abcdefgh1!Abcdefg");
        QVERIFY(app.screenshot("setup-" + disguise + "-mismatch"));
        QCOMPARE(testsupport::accessibilityProblems(app.window()).join("; "), QString());

        app.item("confirmField")->setProperty("text", "Abcdefgh1!Abcdefgh");
        tool.replies = {failure("morvanta-hdiutil: create failed - No space left on device.")};
        app.click("createButton");
        QVERIFY(app.screenshot("setup-" + disguise + "-busy"));
        QTRY_VERIFY(!app.find("errorLine")->property("text").toString().isEmpty());
        QVERIFY(app.screenshot("setup-" + disguise + "-error"));
    }

    void standardUnlock_data() {
        QTest::addColumn<QString>("disguise");
        QTest::newRow("branded") << "none";
        QTest::newRow("neutral") << "neutral";
    }
    void standardUnlock() {
        QFETCH(QString, disguise);
        RecordingRunner tool;
        AppWindow app(tool.runner(), disguise);
        QVERIFY(QDir().mkpath(app.vault().bundlePath()));
        app.item("rootView")
            ->property("router")
            .value<QObject*>()
            ->setProperty("hasSeenWelcome", true);
        QTRY_COMPARE(app.screenName(), "StandardUnlockView");
        settle();
        QVERIFY(app.screenshot("unlock-" + disguise + "-idle", true));

        app.item("passwordField")->setProperty("text", "not the password");
        QCOMPARE(testsupport::accessibilityProblems(app.window()).join("; "), QString());
        QTest::keyClick(app.window(), Qt::Key_Tab);
        QTRY_VERIFY(app.item("unlockButton")->property("visualFocus").toBool());
        QVERIFY(app.screenshot("unlock-" + disguise + "-keyboard-focus"));
        tool.replies = {failure("morvanta-hdiutil: attach failed - Password incorrect.")};
        app.click("unlockButton");
        QVERIFY(app.screenshot("unlock-" + disguise + "-busy"));
        QTRY_VERIFY(app.find("errorLine")->isVisible());
        QVERIFY(app.screenshot("unlock-" + disguise + "-error"));
    }

    void mathQuiz() {
        RecordingRunner tool;
        AppWindow app(tool.runner(), "math");
        QVERIFY(QDir().mkpath(app.vault().bundlePath()));
        app.item("rootView")
            ->property("router")
            .value<QObject*>()
            ->setProperty("hasSeenWelcome", true);
        QTRY_COMPARE(app.screenName(), "MathQuizUnlockView");
        settle();
        QVERIFY(app.screenshot("quiz-idle", true));

        QObject* quiz = app.screen()->property("quiz").value<QObject*>();
        QVERIFY(quiz);
        app.item("answerField")->setProperty("text", "12");
        QCOMPARE(testsupport::accessibilityProblems(app.window()).join("; "), QString());
        tool.replies = {failure("morvanta-hdiutil: attach failed - Password incorrect.")};
        app.click("submitButton");
        QVERIFY(app.screenshot("quiz-busy"));
        QTRY_VERIFY(app.find("messageLine")->isVisible());
        QVERIFY(app.screenshot("quiz-graded-wrong"));

        QMetaObject::invokeMethod(quiz, "regenerate");
        const QString question = app.item("question")->property("text").toString();
        const qint64 a = quiz->property("a").toLongLong();
        const qint64 b = quiz->property("b").toLongLong();
        const QString op = question.section(' ', 1, 1);
        const qint64 answer = op == "+" ? a + b : op == "\u2212" ? a - b : a * b;
        app.item("answerField")->setProperty("text", QString::number(answer));
        tool.replies = {failure("morvanta-hdiutil: attach failed - Password incorrect.")};
        app.click("submitButton");
        QTRY_VERIFY(quiz->property("correct").toBool());
        QVERIFY(app.screenshot("quiz-graded-correct"));
    }

    // The smallest window the screens must fit: they scroll rather than clip.
    void smallestWindow() {
        RecordingRunner tool;
        AppWindow app(tool.runner());
        app.window()->resize(520, 420);
        QTRY_COMPARE(app.item("rootView")->height(), 420.0);
        app.click("forwardButton");
        settle();
        QVERIFY(app.screenshot("small-welcome-page2"));
        app.click("forwardButton");
        app.click("forwardButton");
        QTRY_COMPARE(app.screenName(), "SetupView");
        app.item("passwordField")->setProperty("text", "Abcdefg1");
        app.item("confirmField")->setProperty("text", "Abcdefg");
        QVERIFY(app.screenshot("small-setup"));
    }

    // The vault browser over a real vault: empty, then a dozen items of mixed kinds and
    // sizes, with each banner, menu, confirmation and sheet in turn.
    void vaultBrowser() {
        REQUIRE_FUSE();
        testsupport::ScopedRuntimeDir runtime;
        QTemporaryDir home;
        // A backup tells of 42 % done and then waits to be let go, for its picture.
        QSemaphore backupHeld, backupGoes;
        AppWindow app([&, tool = testsupport::fastToolRunner()](const QStringList& args, const auto& input,
                                                                const HDIUtilOutputLine& onLine) {
            if (args.contains("-puppetstrings")) {
                onLine("PERCENT:42");
                backupHeld.release();
                backupGoes.acquire();
            }
            return tool(args, input, onLine);
        });
        app.vault().createVault("correct horse");
        app.vault().unlock("correct horse");
        QTRY_COMPARE(app.screenName(), "VaultView");
        QTRY_COMPARE(app.window()->size(), QSize(800, 635));
        settle();
        QVERIFY(app.screenshot("browser-empty"));

        const QList<std::pair<QString, qint64>> files = {
            {"Tax Return 2023.pdf", 1843200},
            {"Passport scan.jpg", 734003},
            {"notes.txt", 842},
            {"Budget 2024.ods", 51234},
            {"Board presentation.odp", 9876543},
            {"Old projects.zip", 123456789},
            {"interview.mp3", 4567890},
            {"backup-keys.sh", 1},
            {"Contract draft.docx", 23456},
            {"recovery codes", 0},
        };
        for (const auto& [name, size] : files) {
            const QString path = home.filePath(name);
            testsupport::writeFile(path, QByteArray(size, 'x'));
            app.vault().addItem(QUrl::fromLocalFile(path));
        }
        QDir().mkpath(home.filePath("Family Photos/2019"));
        testsupport::writeFile(home.filePath("Family Photos/2019/beach.png"),
                               QByteArray(2500000, 'p'));
        testsupport::writeFile(home.filePath("Family Photos/cat.png"), QByteArray(800000, 'c'));
        app.vault().addItem(QUrl::fromLocalFile(home.filePath("Family Photos")));
        QDir().mkpath(home.filePath("Client Files"));
        app.vault().addItem(QUrl::fromLocalFile(home.filePath("Client Files")));
        settle();
        QVERIFY(app.screenshot("browser-items"));

        QObject* browser = app.screen()->property("browser").value<QObject*>();
        QVERIFY(browser);
        const QString root = app.vault().mountPoint().toLocalFile() + "/";
        auto shot = [&app](const QString& name) {
            settle();
            QVERIFY(app.screenshot(name));
        };
        auto closePopup = [&app] {
            QTest::keyClick(app.window(), Qt::Key_Escape);
            settle();
        };

        // Sorted by size, largest first, with a row selected and its menu open.
        app.click("header.Size");
        settle();
        app.click("header.Size");
        browser->setProperty("selection", QUrl::fromLocalFile(root + "Tax Return 2023.pdf"));
        shot("browser-sorted-selected");
        app.click("actionsButton");
        shot("browser-actions-menu");
        closePopup();

        app.click("gearButton");
        shot("browser-gear-menu");
        closePopup();

        // Where the keyboard is: the selected row, a button, a menu entry.
        app.item("itemTable")->forceActiveFocus(Qt::TabFocusReason);
        QTest::keyClick(app.window(), Qt::Key_Down);
        shot("browser-focus-row");
        app.item("gearButton")->forceActiveFocus(Qt::TabFocusReason);
        shot("browser-focus-button");
        QTest::keyClick(app.window(), Qt::Key_Space);
        QTest::keyClick(app.window(), Qt::Key_Down);
        shot("browser-focus-menu");
        closePopup();

        // A failure and a success, each as the action leaves it.
        const QString clash = home.filePath("again/notes.txt");
        testsupport::writeFile(clash, "again");
        app.panels().openAnswers = {QList<QUrl>{QUrl::fromLocalFile(clash)}};
        app.click("addButton");
        QTRY_VERIFY(!browser->property("error").toString().isEmpty());
        shot("browser-error-banner");
        browser->setProperty("selection", QUrl::fromLocalFile(root + "notes.txt"));
        QMetaObject::invokeMethod(browser, "chooseRowMenuEntry", Q_ARG(QString, "rename"),
                                  Q_ARG(QUrl, QUrl::fromLocalFile(root + "notes.txt")));
        shot("browser-rename-prompt");
        app.typeInto("renameField", "Shopping list");
        QTest::keyClick(app.window(), Qt::Key_Return);
        QTRY_VERIFY(!browser->property("success").toString().isEmpty());
        shot("browser-success-banner");

        browser->setProperty("selection", QUrl::fromLocalFile(root + "Passport scan.jpg"));
        browser->setProperty("confirmRestore", true);
        shot("browser-restore-confirmation");
        closePopup();
        browser->setProperty("selection", QUrl::fromLocalFile(root + "Family Photos"));
        browser->setProperty("confirmDelete", true);
        shot("browser-delete-confirmation");
        closePopup();

        browser->setProperty("showPasswordChange", true);
        app.typeInto("oldPasswordField", "not it");
        app.typeInto("newPasswordField", "new password");
        app.typeInto("confirmPasswordField", "new password");
        app.click("changePasswordButton");
        QTRY_VERIFY(app.find("passwordErrorLine")->isVisible());
        shot("browser-password-sheet");
        closePopup();

        browser->setProperty("showAbout", true);
        shot("browser-about-sheet");
        closePopup();

        QMimeData dragged;
        dragged.setUrls({QUrl::fromLocalFile(home.filePath("Family Photos"))});
        QDragEnterEvent enter(QPoint(400, 300), Qt::CopyAction, &dragged, Qt::LeftButton,
                              Qt::NoModifier);
        QCoreApplication::sendEvent(app.window(), &enter);
        shot("browser-drop-overlay");
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(app.window(), &leave);

        // An add under way, held at its first chunk: the progress strip, and its Cancel.
        auto gate = std::make_shared<GatedFileLayer>();
        app.vault().setFileLayer(gate);
        testsupport::writeFile(home.filePath("Holiday film.mkv"), QByteArray(24 << 20, 'f'));
        app.panels().openAnswers = {QList<QUrl>{QUrl::fromLocalFile(home.filePath("Holiday film.mkv"))}};
        app.click("addButton");
        QTRY_VERIFY(app.find("progressStrip")->isVisible());
        shot("browser-progress-add");
        app.click("cancelWorkButton");
        QTRY_VERIFY(!app.vault().isWorking());
        QVERIFY(QFileInfo::exists(home.filePath("Holiday film.mkv")));
        QVERIFY(!QFileInfo::exists(root + "Holiday film.mkv"));
        QVERIFY(browser->property("error").toString().isEmpty());

        app.panels().saveAnswers = {QUrl::fromLocalFile(home.filePath("MorvantaVault-Backup.7z"))};
        app.click("gearButton");
        settle();
        app.click("gear.backup");
        QTRY_VERIFY(backupHeld.available() > 0 && app.find("progressStrip")->isVisible());
        QCOMPARE(app.find("progressText")->property("text").toString().remove(u'\u27E6').remove(u'\u27E7'),
                 "\u201CMorvantaVault-Backup.7z\u201D \u2014 42%");
        QVERIFY(!app.find("progressBar")->property("indeterminate").toBool());
        shot("browser-progress-backup");
        backupGoes.release();
        QTRY_VERIFY(!app.vault().isWorking());

        // The smallest window still shows every part.
        app.window()->resize(520, 420);
        QTRY_COMPARE(app.item("rootView")->height(), 420.0);
        shot("browser-small");
    }
};

QTEST_MAIN(TestScreenshots)
#include "tst_screenshots.moc"
