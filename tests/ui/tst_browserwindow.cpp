// The vault browser as a person uses it: the whole window offscreen over a real gocryptfs
// vault, with the file pickers answered for the user. Adding by dropping, sorting, opening,
// moving out, the keyboard walk from unlock to lock, and what a screen reader finds on the
// menus and sheets, each judged by what is on disk and on screen.

#include "browser/BrowserTexts.h"
#include "browser/ItemTableModel.h"
#include "browser/VaultBrowser.h"
#include "support/Accessibility.h"
#include "support/AppWindow.h"

#include <QAccessible>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

using testsupport::VaultWindow;

class TestBrowserWindow : public QObject {
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(".*")); }

    // The status bar's texts come from their one source; the table sorts by byte count, not
    // by the text shown ("10.0 kB" < "9 bytes"); double click and Return open an item with the
    // desktop's application; moving out.
    void statusSortingOpeningAndMovingOut() {
        REQUIRE_FUSE();
        VaultWindow v;
        QTRY_COMPARE(v.app.screenName(), "VaultView");
        QVERIFY(v.app.shown("emptyState") && !v.app.shown("itemTableFrame"));
        QCOMPARE(v.app.text("countPillText"), itemCountText(0));
        QCOMPARE(v.app.text("idlePillText"), idleText(v.app.vault().idleTimeoutSeconds()));
        QCOMPARE(v.app.text("mountPathLabel"), v.app.vault().mountPoint().toLocalFile());
        QVERIFY(!v.app.item("actionsButton")->isEnabled());

        const QUrl nine = v.added("b-nine.txt", 9);
        const QUrl tenK = v.added("A-ten-k.txt", 10000);
        QTRY_VERIFY(v.app.shown("itemTableFrame") && !v.app.shown("emptyState"));
        QCOMPARE(v.app.text("countPillText"), itemCountText(2));
        v.app.click("header.Size");
        QTRY_COMPARE(v.app.item("cell.0.0")->property("display").toString(), "b-nine.txt");
        QCOMPARE(v.app.item("cell.0.1")->property("display").toString(), byteCountText(9));
        QQuickItem* cell = v.app.item("cell.0.0");
        QTest::mouseDClick(v.app.window(), Qt::LeftButton, {}, cell->mapToScene({20, cell->height() / 2}).toPoint());
        QTRY_COMPARE(v.app.workspace().opened, QList<QUrl>({nine}));
        v.app.keys({Qt::Key_Down, Qt::Key_Return});
        QCOMPARE(v.browser()->selection(), tenK);
        QCOMPARE(v.app.workspace().opened, QList<QUrl>({nine, tenK}));

        // Moving out to the folder chosen takes the item, and is its own feedback. (A cancelled
        // panel is one of the browser's actions that do no work.)
        v.app.panels().openAnswers = {QList<QUrl>{QUrl::fromLocalFile(v.home.path())}};
        v.app.choose("actionsButton", "rowMenu.moveOut");
        QCOMPARE(v.app.panels().openRequests.last(), VaultBrowser::moveOutPanelOptions());
        v.waitIdle();
        QVERIFY(QFileInfo::exists(v.home.filePath("A-ten-k.txt")));
        QCOMPARE(v.rowNames(), QStringList("b-nine.txt"));
        QVERIFY(!v.app.shown("successBanner") && !v.app.shown("errorBanner"));
        QCOMPARE(v.browser()->selection(), QUrl());
    }

    // Of five dropped files the second cannot go in: it stays where it was, the others move
    // in, and a banner says so until dismissed.
    void droppingFiveWhereTheSecondFails() {
        REQUIRE_FUSE();
        VaultWindow v;
        v.added("first/b.txt");
        QList<QUrl> dropped;
        for (const char* path : {"a.txt", "second/b.txt", "c.txt", "d.txt", "e.txt"})
            dropped.append(v.file(path));
        v.app.drag(dropped, false);
        QTRY_VERIFY(v.app.shown("dropOverlay"));
        v.app.drag(dropped, true);
        v.waitIdle();
        QTRY_VERIFY(!v.app.shown("dropOverlay"));
        QCOMPARE(v.rowNames(), QStringList({"a.txt", "b.txt", "c.txt", "d.txt", "e.txt"}));
        QVERIFY(v.app.shown("errorBanner") && !v.app.shown("successBanner"));
        QVERIFY(QFileInfo::exists(v.home.filePath("second/b.txt")));
        QVERIFY(!QFileInfo::exists(v.home.filePath("a.txt")) && !QFileInfo::exists(v.home.filePath("e.txt")));
        v.app.click("errorBannerDismiss");
        QVERIFY(!v.app.shown("errorBanner"));
    }

    // Everything by keyboard alone, from the open vault to the lock screen.
    void keyboardOnly() {
        REQUIRE_FUSE();
        VaultWindow v;
        for (const char* name : {"Documents/taxes.pdf", "diary.txt", "notes.txt", "photo.jpg"})
            v.added(name);

        QCOMPARE(v.app.window()->activeFocusItem(), v.app.item("itemTable")); // no Tab needed
        v.app.keys({Qt::Key_Down, Qt::Key_Down});
        QCOMPARE(v.browser()->selection(), v.inVault("notes.txt"));
        QVERIFY(v.app.item("cell.1.0")->findChild<QQuickItem*>("rowFocusRing")->isVisible());
        v.app.keys({Qt::Key_F2});
        QTRY_VERIFY(v.app.shown("renameDialog"));
        v.app.type("journal");
        v.app.keys({Qt::Key_Return});
        v.waitIdle();
        QCOMPARE(v.rowNames(), QStringList({"diary.txt", "journal.txt", "photo.jpg", "taxes.pdf"}));

        // Typed letters find the item; the menu key offers its menu; a dialog's buttons are
        // reached with Tab, and take Space or Return.
        v.app.type("ta");
        QCOMPARE(v.browser()->selection(), v.inVault("taxes.pdf"));
        v.app.keys({Qt::Key_Menu});
        QTRY_VERIFY(v.app.shown("rowMenu.restore"));
        v.app.waitForFrame();
        v.app.keys({Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Return});
        QTRY_VERIFY(v.app.shown("restoreDialog"));
        v.app.keys({Qt::Key_Tab, Qt::Key_Space});
        v.waitIdle();
        QVERIFY(QFileInfo::exists(v.home.filePath("Documents/taxes.pdf")));

        v.app.type("d");
        v.app.keys({Qt::Key_Delete});
        QTRY_VERIFY(v.app.shown("deleteDialog"));
        v.app.keys({Qt::Key_Tab, Qt::Key_Return});
        v.waitIdle();
        QCOMPARE(v.rowNames(), QStringList({"journal.txt", "photo.jpg"}));

        v.app.tabTo("gearButton");
        v.app.keys({Qt::Key_Space});
        QTRY_VERIFY(v.app.shown("gear.idle15"));
        v.app.waitForFrame();
        v.app.keys({Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Down});
        QVERIFY(v.app.item("gear.idle15")->hasActiveFocus());
        v.app.keys({Qt::Key_Return});
        QTRY_COMPARE(v.app.text("idlePillText"), idleText(15 * 60));

        // Ctrl+L locks and unmounts.
        v.app.keys({Qt::Key_L}, Qt::ControlModifier);
        QTRY_COMPARE(v.app.screenName(), "StandardUnlockView");
        QVERIFY(testsupport::mountsBelow(v.runtime.path()).isEmpty());
    }

    // What a screen reader finds on the browser, its menus and its sheets: every control
    // named, in its role and state, working when pressed, and no password readable. Then the
    // password sheet as a person uses it, and the about sheet's pages.
    void screenReaderAndSheets() {
        REQUIRE_FUSE();
        VaultWindow v;
        v.added("Documents/taxes.pdf");
        QAccessible::setActive(true);
        QQuickWindow* w = v.app.window();
        auto named = [w](const QString& name) {
            QAccessibleInterface* found = nullptr;
            testsupport::visitAccessible(w, [&](QAccessibleInterface* element) {
                if (element->object() && element->object()->objectName() == name)
                    found = element;
            });
            return found;
        };
        auto press = [named](const QString& name) {
            QAccessibleInterface* element = named(name);
            QVERIFY2(element && element->actionInterface(), qPrintable(name));
            element->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        };
        QTRY_VERIFY(named("header.Size"));
        QCOMPARE(testsupport::accessibilityProblems(w).join("; "), QString());
        press("header.Size");
        QCOMPARE(v.table()->sortColumn(), int(ItemTableModel::SizeColumn));

        v.browser()->setSelection(v.inVault("taxes.pdf"));
        press("actionsButton");
        QTRY_VERIFY(v.app.shown("rowMenu.restore"));
        QCOMPARE(testsupport::accessibilityProblems(w).join("; "), QString());
        press("rowMenu.delete");
        QTRY_VERIFY(v.app.shown("deleteDialog"));
        QCOMPARE(testsupport::accessibilityProblems(w).join("; "), QString());
        press("deleteDialogCancel");
        QTRY_VERIFY(!v.app.shown("deleteDialog"));

        press("gearButton");
        QTRY_VERIFY(v.app.shown("gear.idle1"));
        QCOMPARE(testsupport::accessibilityProblems(w).join("; "), QString());
        QVERIFY(named("gear.disguise.none")->state().checked);
        QVERIFY(named("gear.idle5")->state().checked && !named("gear.idle1")->state().checked);
        press("gear.disguise.math");
        QCOMPARE(v.app.settings().disguiseMode(), "math");
        press("gearButton");
        QTRY_VERIFY(v.app.shown("gear.idle1"));
        QVERIFY(named("gear.disguise.math")->state().checked && !named("gear.disguise.none")->state().checked);
        press("gear.idle1");
        QCOMPARE(v.app.vault().idleTimeoutSeconds(), 60.0);

        v.app.choose("gearButton", "gear.changePassword");
        QTRY_VERIFY(v.app.shown("passwordSheet"));
        for (const char* field : {"oldPasswordField", "newPasswordField", "confirmPasswordField"})
            v.app.typeInto(field, "hunter2hunter2");
        QCOMPARE(testsupport::accessibilityProblems(w, {"hunter2"}).join("; "), QString());
        // Return changes the password and closes the sheet. Shown again, the sheet starts empty;
        // Cancel closes it.
        v.app.typeInto("oldPasswordField", v.password);
        v.app.keys({Qt::Key_Return});
        QTRY_VERIFY(!v.app.shown("passwordSheet"));
        QVERIFY(v.app.shown("successBanner"));
        v.app.choose("gearButton", "gear.changePassword");
        QTRY_VERIFY(v.app.shown("passwordSheet"));
        QCOMPARE(v.app.text("oldPasswordField"), QString());
        v.app.click("passwordCancelButton");
        QTRY_VERIFY(!v.app.shown("passwordSheet"));

        // The about sheet is the welcome pages; going past the last closes it.
        v.app.click("aboutButton");
        QTRY_VERIFY(v.app.shown("aboutPages"));
        QCOMPARE(testsupport::accessibilityProblems(w).join("; "), QString());
        for (int page = 0; page < 3; ++page)
            v.app.click("forwardButton");
        QTRY_VERIFY(!v.app.shown("aboutSheet"));
        QVERIFY(!v.browser()->showAbout());
    }
};

QTEST_MAIN(TestBrowserWindow)
#include "tst_browserwindow.moc"
