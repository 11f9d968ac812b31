// The vault browser as a person uses it: the whole window offscreen over a real gocryptfs
// vault, with the file pickers answered for the user. Adding (by panel and by dropping),
// sorting, renaming, restoring, moving out, deleting, the settings menu, the lock, backups
// and the password sheet, each judged by what is on disk and on screen afterwards.

#include "browser/ItemTableModel.h"
#include "support/Accessibility.h"

#include <QAccessible>
#include "support/AppWindow.h"
#include "support/IdleDelay.h"
#include "support/FuseHarness.h"
#include "support/Trees.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QtQml/QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(MorvantaPlugin)
Q_IMPORT_QML_PLUGIN(Morvanta_LockScreensPlugin)
Q_IMPORT_QML_PLUGIN(Morvanta_BrowserPlugin)

using testsupport::AppWindow;

namespace {

const QString kPassword = QStringLiteral("correct horse battery");

// A window showing a freshly made, open vault, and a home folder of the test's own to take
// items from.
class OpenVault {
public:
    OpenVault() {
        app.vault().createVault(kPassword);
        app.vault().unlock(kPassword);
    }

    testsupport::ScopedRuntimeDir runtime;
    QTemporaryDir home;
    // Mutable: the helpers below only look, but the window's accessors are not const.
    mutable AppWindow app{testsupport::fastToolRunner()};

    QObject* browser() const { return app.screen()->property("browser").value<QObject*>(); }
    ItemTableModel* table() const {
        return app.screen()->property("tableModel").value<ItemTableModel*>();
    }
    QString text(const QString& objectName) const {
        QQuickItem* found = app.item(objectName);
        return found ? found->property("text").toString() : QStringLiteral("<missing>");
    }
    // An item, or a dialog or menu (which are no items), that is on screen.
    bool shown(const QString& objectName) const {
        QObject* popup = app.screen()->findChild<QObject*>(objectName);
        if (popup && !qobject_cast<QQuickItem*>(popup))
            return popup->property("visible").toBool();
        QQuickItem* found = app.find(objectName);
        return found && found->isVisible();
    }
    // Popups place their entries on the next frame.
    void waitForFrame() const {
        QSignalSpy swapped(app.window(), &QQuickWindow::frameSwapped);
        app.window()->update();
        QVERIFY(swapped.wait(2000));
    }

    // A file in the home folder, made with `size` bytes.
    QUrl file(const QString& relativePath, qint64 size = 10) const {
        const QString path = home.filePath(relativePath);
        QDir().mkpath(QFileInfo(path).path());
        testsupport::writeFile(path, QByteArray(size, 'm'));
        return QUrl::fromLocalFile(path);
    }
    // Moves a home file into the vault as a person would have earlier; its place in the vault.
    QUrl added(const QString& relativePath, qint64 size = 10) {
        const QUrl source = file(relativePath, size);
        app.vault().addItem(source);
        return inVault(source.fileName());
    }
    QUrl inVault(const QString& name) const {
        return QUrl::fromLocalFile(app.vault().mountPoint().toLocalFile() + "/" + name);
    }
    QStringList rowNames() const {
        QStringList names;
        for (const VaultItem& item : table()->rows())
            names.append(item.name);
        return names;
    }

    void waitIdle() const { QTRY_VERIFY(!browser()->property("busy").toBool()); }
    void select(const QUrl& url) const {
        const int row = table()->rowOf(url);
        QVERIFY2(row >= 0, qPrintable(url.toString()));
        // The table lays its rows out on the next frame.
        const QString cell = QStringLiteral("cell.%1.0").arg(row);
        QTRY_VERIFY(app.find(cell) && app.find(cell)->property("url").toUrl() == url);
        app.click(cell);
        QCOMPARE(browser()->property("selection").toUrl(), url);
    }
    void rightClick(const QUrl& url) const {
        const QString cell = QStringLiteral("cell.%1.0").arg(table()->rowOf(url));
        QTRY_VERIFY(app.find(cell) && app.find(cell)->property("url").toUrl() == url);
        const QQuickItem* found = app.find(cell);
        const QPointF centre = found->mapToScene({found->width() / 2, found->height() / 2});
        QTest::mouseClick(app.window(), Qt::RightButton, {}, centre.toPoint());
    }
    // The "Actions" menu for the selection, then one of its entries.
    void chooseAction(const QString& action) const {
        app.click("actionsButton");
        QTRY_VERIFY(shown("rowMenu." + action));
        waitForFrame();
        app.click("rowMenu." + action);
    }
    // Tab, as often as it takes, to the item of that name.
    void tabTo(const QString& objectName) const {
        QQuickItem* target = app.item(objectName);
        for (int i = 0; i < 12 && target && !target->hasActiveFocus(); ++i)
            QTest::keyClick(app.window(), Qt::Key_Tab);
        QVERIFY2(target && target->hasActiveFocus(), qPrintable(objectName));
    }
    void type(const QString& text) const {
        for (QChar c : text)
            QTest::keyClick(app.window(), c.toLatin1());
    }
    void keys(const QList<Qt::Key>& keys) const {
        for (Qt::Key key : keys)
            QTest::keyClick(app.window(), key);
    }
    void chooseSetting(const QString& entry) const {
        app.click("gearButton");
        QTRY_VERIFY(shown(entry));
        waitForFrame();
        app.click(entry);
    }
};

void sendDrag(QQuickWindow* window, const QList<QUrl>& urls, bool drop) {
    QMimeData data;
    data.setUrls(urls);
    const QPoint at(400, 300);
    const Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
    QDragEnterEvent enter(at, actions, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &enter);
    QDragMoveEvent move(at, actions, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &move);
    if (!drop)
        return;
    QDropEvent dropped(at, actions, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &dropped);
}

// 7-Zip's exit status for unpacking an archive with a password.
int unpack(const QString& archive, const QString& password, const QString& into) {
    QProcess sevenZip;
    sevenZip.start("7z", {"x", "-y", "-p" + password, "-o" + into, archive});
    sevenZip.waitForFinished();
    return sevenZip.exitStatus() == QProcess::NormalExit ? sevenZip.exitCode() : -1;
}

} // namespace

class TestBrowserWindow : public QObject {
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(".*")); }

    void emptyVaultThenCounts() {
        REQUIRE_FUSE();
        OpenVault v;
        QTRY_COMPARE(v.app.screenName(), "VaultView");
        QVERIFY(v.shown("emptyState"));
        QVERIFY(!v.shown("itemTableFrame"));
        QCOMPARE(v.text("countPillText"), "0 items");
        QCOMPARE(v.text("idlePillText"), "Auto-lock: 5m");
        QCOMPARE(v.text("mountPathLabel"), v.app.vault().mountPoint().toLocalFile());
        QVERIFY(!v.app.item("actionsButton")->isEnabled());

        v.added("one.txt");
        QTRY_VERIFY(v.shown("itemTableFrame"));
        QVERIFY(!v.shown("emptyState"));
        QCOMPARE(v.text("countPillText"), "1 item");
        v.added("two.txt");
        QCOMPARE(v.text("countPillText"), "2 items");
    }

    void addingFiveWhereTheSecondFails() {
        REQUIRE_FUSE();
        OpenVault v;
        v.added("first/b.txt");
        QList<QUrl> chosen;
        for (const char* path : {"a.txt", "second/b.txt", "c.txt", "d.txt", "e.txt"})
            chosen.append(v.file(path));
        v.app.panels().openAnswers = {chosen};
        v.app.click("addButton");
        v.waitIdle();

        QCOMPARE(v.rowNames(), QStringList({"a.txt", "b.txt", "c.txt", "d.txt", "e.txt"}));
        QVERIFY(v.shown("errorBanner"));
        QCOMPARE(v.text("errorBannerText"), "IO failed: Item with same name already in vault.");
        QVERIFY(!v.shown("successBanner"));
        // The one refused stays where it was; the others have moved in.
        QVERIFY(QFileInfo::exists(v.home.filePath("second/b.txt")));
        QVERIFY(!QFileInfo::exists(v.home.filePath("a.txt")));
        QVERIFY(!QFileInfo::exists(v.home.filePath("e.txt")));
        QCOMPARE(v.app.panels().openRequests.last().prompt, "Add to Vault");

        v.app.click("errorBannerDismiss");
        QVERIFY(!v.shown("errorBanner"));
    }

    void sortingBySizeAndByName() {
        REQUIRE_FUSE();
        OpenVault v;
        v.added("b-nine.txt", 9);
        v.added("A-ten-k.txt", 10000);
        v.added("c-two-m.txt", 2000000);
        v.added("D-empty.txt", 0);
        QCOMPARE(v.rowNames(),
                 QStringList({"A-ten-k.txt", "b-nine.txt", "c-two-m.txt", "D-empty.txt"}));

        // By byte count, not by the text shown ("10.0 kB" < "2.0 MB" < "9 bytes").
        v.app.click("header.Size");
        QTRY_COMPARE(v.rowNames(),
                     QStringList({"D-empty.txt", "b-nine.txt", "A-ten-k.txt", "c-two-m.txt"}));
        QTRY_COMPARE(v.app.item("cell.3.1")->property("display").toString(), "2.0 MB");
        v.waitForFrame();
        v.app.click("header.Size");
        QTRY_COMPARE(v.rowNames(),
                     QStringList({"c-two-m.txt", "A-ten-k.txt", "b-nine.txt", "D-empty.txt"}));
        QTRY_COMPARE(v.app.item("cell.0.0")->property("display").toString(), "c-two-m.txt");
    }

    void renamingKeepsTheExtension() {
        REQUIRE_FUSE();
        OpenVault v;
        const QUrl report = v.added("Report.final.pdf");
        QDir().mkpath(v.home.filePath("Photos"));
        v.app.vault().addItem(QUrl::fromLocalFile(v.home.filePath("Photos")));
        v.app.vault().addItem(v.file("other.txt"));
        v.app.vault().addItem(v.file("Taken.txt"));

        v.select(report);
        v.chooseAction("rename");
        QTRY_VERIFY(v.shown("renameDialog"));
        QCOMPARE(v.text("renameDialogTitle"), "Rename item");
        QCOMPARE(v.text("renameField"), "Report.final");
        QCOMPARE(v.text("renameDialogMessage"),
                 "Enter a new name. The \u201C.pdf\u201D extension is kept so the item still "
                 "opens correctly.");
        v.app.typeInto("renameField", "Summary.docx");
        v.app.click("renameDialogConfirm");
        v.waitIdle();
        QVERIFY(!v.shown("renameDialog"));
        QCOMPARE(v.text("successBannerText"), "Renamed.");
        QVERIFY(v.rowNames().contains("Summary.pdf"));
        QVERIFY(QFileInfo::exists(v.inVault("Summary.pdf").toLocalFile()));
        QCOMPARE(v.browser()->property("selection").toUrl(), QUrl());

        // A folder has no extension to keep; this time from the row's own menu, with Return.
        v.rightClick(v.inVault("Photos"));
        QTRY_VERIFY(v.shown("rowMenu.rename"));
        v.waitForFrame();
        v.app.click("rowMenu.rename");
        QTRY_VERIFY(v.shown("renameDialog"));
        QCOMPARE(v.text("renameField"), "Photos");
        QCOMPARE(v.text("renameDialogMessage"), "Enter a new name for this item.");
        v.app.typeInto("renameField", "Pics.old");
        QTest::keyClick(v.app.window(), Qt::Key_Return);
        v.waitIdle();
        QVERIFY(v.rowNames().contains("Pics.old"));
        QVERIFY(!v.shown("renameDialog"));

        // A name already taken: the engine's text, and the item stays selected.
        const QUrl other = v.inVault("other.txt");
        v.select(other);
        v.chooseAction("rename");
        QTRY_VERIFY(v.shown("renameDialog"));
        v.app.typeInto("renameField", "Taken");
        v.app.click("renameDialogConfirm");
        v.waitIdle();
        QCOMPARE(v.text("errorBannerText"),
                 "IO failed: An item named \u201CTaken.txt\u201D is already in the vault.");
        QVERIFY(!v.shown("successBanner"));
        QCOMPARE(v.browser()->property("selection").toUrl(), other);
    }

    void restoringThroughTheConfirmation() {
        REQUIRE_FUSE();
        OpenVault v;
        const QUrl taxes = v.added("Documents/Taxes 2023.pdf");
        // Copied in by another program: nobody knows where it came from.
        testsupport::writeFile(v.inVault("stray.txt").toLocalFile(), "stray");
        v.app.vault().refreshItems();

        v.select(v.inVault("stray.txt"));
        v.app.click("actionsButton");
        QTRY_VERIFY(v.shown("rowMenu.moveOut"));
        QVERIFY(!v.app.find("rowMenu.restore"));
        QTest::keyClick(v.app.window(), Qt::Key_Escape);
        QTRY_VERIFY(!v.shown("rowMenu.moveOut"));

        v.select(taxes);
        v.chooseAction("restore");
        QTRY_VERIFY(v.shown("restoreDialog"));
        QCOMPARE(v.text("restoreDialogTitle"), "Restore to original location?");
        QCOMPARE(v.text("restoreDialogMessage"),
                 "\u201CTaxes 2023.pdf\u201D will be moved out of the vault back to:\n\n" +
                     v.home.filePath("Documents/Taxes 2023.pdf"));
        QCOMPARE(v.text("restoreDialogConfirm"), "Restore");
        v.app.click("restoreDialogConfirm");
        v.waitIdle();
        QVERIFY(!v.shown("restoreDialog"));
        QCOMPARE(v.text("successBannerText"), "Restored to original location.");
        QCOMPARE(testsupport::readFile(v.home.filePath("Documents/Taxes 2023.pdf")),
                 QByteArray(10, 'm'));
        QCOMPARE(v.rowNames(), QStringList("stray.txt"));

        // Cancelled, nothing happens.
        v.added("again.txt");
        v.select(v.inVault("again.txt"));
        v.chooseAction("restore");
        QTRY_VERIFY(v.shown("restoreDialog"));
        v.app.click("restoreDialogCancel");
        QTRY_VERIFY(!v.shown("restoreDialog"));
        QVERIFY(!v.browser()->property("confirmRestore").toBool());
        QVERIFY(v.rowNames().contains("again.txt"));
    }

    void movingOutAndDeleting() {
        REQUIRE_FUSE();
        OpenVault v;
        const QUrl notes = v.added("notes.txt");
        const QUrl diary = v.added("diary.txt");
        QDir().mkpath(v.home.filePath("Elsewhere"));

        // A cancelled destination changes nothing.
        v.select(notes);
        v.chooseAction("moveOut");
        const platform::OpenPanelOptions asked = v.app.panels().openRequests.last();
        QCOMPARE(asked.prompt, "Move Here");
        QCOMPARE(asked.message, "Choose destination outside the vault.");
        QVERIFY(asked.canChooseDirectories && !asked.canChooseFiles);
        QVERIFY(!asked.allowsMultipleSelection);
        QCOMPARE(v.browser()->property("selection").toUrl(), notes);
        QVERIFY(v.rowNames().contains("notes.txt"));

        v.app.panels().openAnswers = {
            QList<QUrl>{QUrl::fromLocalFile(v.home.filePath("Elsewhere"))}};
        v.chooseAction("moveOut");
        v.waitIdle();
        QVERIFY(QFileInfo::exists(v.home.filePath("Elsewhere/notes.txt")));
        QCOMPARE(v.rowNames(), QStringList("diary.txt"));
        // Moving out is its own feedback.
        QVERIFY(!v.shown("successBanner"));
        QVERIFY(!v.shown("errorBanner"));
        QCOMPARE(v.browser()->property("selection").toUrl(), QUrl());

        v.select(diary);
        v.chooseAction("delete");
        QTRY_VERIFY(v.shown("deleteDialog"));
        QCOMPARE(v.text("deleteDialogTitle"), "Delete permanently?");
        QCOMPARE(v.text("deleteDialogMessage"),
                 "The vault holds the only copy of \u201Cdiary.txt\u201D \u2014 deleting it erases "
                 "it from your computer entirely. This can\u2019t be undone.");
        QCOMPARE(v.text("deleteDialogConfirm"), "Delete");
        // The action counts as activity.
        QVERIFY(testsupport::restartsIdleDelay(v.app.vault(), [&] {
            v.app.click("deleteDialogConfirm");
            v.waitIdle();
        }));
        QCOMPARE(v.text("successBannerText"), "Deleted permanently.");
        QVERIFY(!QFileInfo::exists(diary.toLocalFile()));
        QVERIFY(v.shown("emptyState"));
    }

    void openingUsesTheDesktopsApplication() {
        REQUIRE_FUSE();
        OpenVault v;
        const QUrl notes = v.added("notes.txt");
        const QUrl other = v.added("other.txt");
        QTRY_VERIFY(v.app.find("cell.0.0"));
        QQuickItem* cell = v.app.item("cell.0.0");
        QTest::mouseDClick(v.app.window(), Qt::LeftButton, {},
                           cell->mapToScene({20, cell->height() / 2}).toPoint());
        QTRY_COMPARE(v.app.workspace().opened, QList<QUrl>({notes}));

        QTest::keyClick(v.app.window(), Qt::Key_Down);
        QCOMPARE(v.browser()->property("selection").toUrl(), other);
        QTest::keyClick(v.app.window(), Qt::Key_Return);
        QCOMPARE(v.app.workspace().opened, QList<QUrl>({notes, other}));
        QVERIFY(!v.shown("successBanner"));
    }

    // Everything by keyboard alone, from the lock screen back to it.
    void keyboardOnly() {
        REQUIRE_FUSE();
        OpenVault v;
        v.added("Documents/taxes.pdf");
        for (const char* name : {"diary.txt", "notes.txt", "photo.jpg"})
            v.added(name);
        v.app.vault().lock();
        QTRY_COMPARE(v.app.screenName(), "StandardUnlockView");
        v.type(kPassword);
        v.keys({Qt::Key_Return});
        QTRY_COMPARE(v.app.screenName(), "VaultView");

        v.tabTo("itemTable");
        v.keys({Qt::Key_Down, Qt::Key_Down});
        QCOMPARE(v.browser()->property("selection").toUrl(), v.inVault("notes.txt"));
        QVERIFY(v.app.item("cell.1.0")->findChild<QQuickItem*>("rowFocusRing")->isVisible());
        v.keys({Qt::Key_F2});
        QTRY_VERIFY(v.shown("renameDialog"));
        v.type("journal");
        v.keys({Qt::Key_Return});
        v.waitIdle();
        QCOMPARE(v.rowNames(), QStringList({"diary.txt", "journal.txt", "photo.jpg", "taxes.pdf"}));

        // Typed letters find the item; the menu key offers its menu; a dialog's buttons are
        // reached with Tab.
        v.type("ta");
        QCOMPARE(v.browser()->property("selection").toUrl(), v.inVault("taxes.pdf"));
        v.keys({Qt::Key_Menu});
        QTRY_VERIFY(v.shown("rowMenu.restore"));
        v.waitForFrame();
        v.keys({Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Return});
        QTRY_VERIFY(v.shown("restoreDialog"));
        v.keys({Qt::Key_Tab, Qt::Key_Space});
        v.waitIdle();
        QVERIFY(QFileInfo::exists(v.home.filePath("Documents/taxes.pdf")));

        v.type("d");
        v.keys({Qt::Key_Delete});
        QTRY_VERIFY(v.shown("deleteDialog"));
        v.keys({Qt::Key_Tab, Qt::Key_Space});
        v.waitIdle();
        QCOMPARE(v.rowNames(), QStringList({"journal.txt", "photo.jpg"}));

        v.tabTo("gearButton");
        v.keys({Qt::Key_Space});
        QTRY_VERIFY(v.shown("gear.idle15"));
        v.waitForFrame();
        v.keys({Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Down});
        QVERIFY(v.app.item("gear.idle15")->hasActiveFocus());
        v.keys({Qt::Key_Return});
        QTRY_COMPARE(v.text("idlePillText"), "Auto-lock: 15m");

        QTest::keyClick(v.app.window(), Qt::Key_L, Qt::ControlModifier);
        QTRY_COMPARE(v.app.screenName(), "StandardUnlockView");
    }

    // What a screen reader finds on the browser, its menus and its sheets: every control
    // named, in its role and state, working when pressed, and no password readable.
    void screenReaderSeesEveryControl() {
        REQUIRE_FUSE();
        OpenVault v;
        v.added("Documents/taxes.pdf");
        QAccessible::setActive(true);
        QQuickWindow* w = v.app.window();
        auto named = [w](const QString& name) { return testsupport::accessibleNamed(w, name); };
        auto press = [named](const QString& name) {
            QAccessibleInterface* element = named(name);
            QVERIFY2(element && element->actionInterface(), qPrintable(name));
            element->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        };
        QTRY_VERIFY(named("header.Size"));
        QCOMPARE(testsupport::accessibilityProblems(w).join("; "), QString());
        QCOMPARE(named("itemTable")->role(), QAccessible::Table);
        QCOMPARE(named("header.Size")->role(), QAccessible::ColumnHeader);
        press("header.Size");
        QCOMPARE(v.table()->sortColumn(), int(ItemTableModel::SizeColumn));

        v.select(v.inVault("taxes.pdf"));
        press("actionsButton");
        QTRY_VERIFY(v.shown("rowMenu.restore"));
        QCOMPARE(testsupport::accessibilityProblems(w).join("; "), QString());
        press("rowMenu.delete");
        QTRY_VERIFY(v.shown("deleteDialog"));
        QCOMPARE(testsupport::accessibilityProblems(w).join("; "), QString());
        press("deleteDialogCancel");
        QTRY_VERIFY(!v.shown("deleteDialog"));

        press("gearButton");
        QTRY_VERIFY(v.shown("gear.idle1"));
        QCOMPARE(testsupport::accessibilityProblems(w).join("; "), QString());
        QVERIFY(named("gear.disguise.none")->state().checked);
        press("gear.disguise.math");
        QCOMPARE(v.app.settings().disguiseMode(), "math");
        press("gearButton");
        QTRY_VERIFY(v.shown("gear.idle1"));
        QVERIFY(named("gear.disguise.math")->state().checked);
        QVERIFY(!named("gear.disguise.none")->state().checked);
        press("gear.idle1");
        QCOMPARE(v.app.vault().idleTimeoutSeconds(), 60.0);

        v.browser()->setProperty("showPasswordChange", true);
        QTRY_VERIFY(v.shown("passwordSheet"));
        for (const char* field : {"oldPasswordField", "newPasswordField", "confirmPasswordField"})
            v.app.typeInto(field, "hunter2hunter2");
        QCOMPARE(testsupport::accessibilityProblems(w, {"hunter2"}).join("; "), QString());
        bool sheetNamed = false;
        testsupport::visitAccessible(w, [&sheetNamed](QAccessibleInterface* element) {
            sheetNamed |= element->role() == QAccessible::Dialog &&
                          element->text(QAccessible::Name) == "Change Master Password";
        });
        QVERIFY(sheetNamed);
    }

    void droppedFilesAreAdded() {
        REQUIRE_FUSE();
        OpenVault v;
        const QUrl photo = v.file("photo.jpg", 2000);
        const QUrl letter = v.file("letter.txt");
        sendDrag(v.app.window(), {photo, letter}, false);
        QTRY_VERIFY(v.shown("dropOverlay"));
        QVERIFY(v.browser()->property("isDragOver").toBool());
        sendDrag(v.app.window(), {photo, letter}, true);
        v.waitIdle();
        QCOMPARE(v.rowNames(), QStringList({"letter.txt", "photo.jpg"}));
        QVERIFY(!QFileInfo::exists(photo.toLocalFile()));
        QTRY_VERIFY(!v.shown("dropOverlay"));
    }

    void controlLLocksAndShrinksTheWindow() {
        REQUIRE_FUSE();
        OpenVault v;
        QTRY_COMPARE(v.app.window()->size(), QSize(800, 635));
        QCOMPARE(v.app.item("lockButton")->property("helpText").toString(), "Lock vault (Ctrl+L)");
        QTest::keyClick(v.app.window(), Qt::Key_L, Qt::ControlModifier);
        QTRY_VERIFY(!v.app.vault().isUnlocked());
        QTRY_COMPARE(v.app.window()->size(), QSize(600, 600));
        QCOMPARE(v.app.screenName(), "StandardUnlockView");
        QVERIFY(testsupport::mountsBelow(v.runtime.path()).isEmpty());
    }

    void aBackupOpensWithThePassword() {
        REQUIRE_FUSE();
        OpenVault v;
        v.added("Taxes.pdf", 3000);
        v.added("Photos/cat.png", 5000);
        const QString backup = v.home.filePath("Backups/MorvantaVault-Backup.7z");
        QDir().mkpath(v.home.filePath("Backups"));
        v.app.panels().saveAnswers = {QUrl::fromLocalFile(backup)};
        v.chooseSetting("gear.backup");
        v.waitIdle();
        QCOMPARE(v.text("successBannerText"), "Encrypted backup saved.");
        QCOMPARE(v.app.panels().saveRequests.last().nameFieldStringValue,
                 "MorvantaVault-Backup.7z");

        const QString out = v.home.filePath("unpacked");
        QCOMPARE(unpack(backup, kPassword, out), 0);
        QCOMPARE(testsupport::readFile(out + "/Taxes.pdf"), QByteArray(3000, 'm'));
        QCOMPARE(testsupport::readFile(out + "/cat.png"), QByteArray(5000, 'm'));
        QVERIFY(unpack(backup, "wrong", out + "2") != 0);

        // Cancelling the panel is silent.
        v.chooseSetting("gear.backup");
        QVERIFY(!v.shown("successBanner"));
        QVERIFY(!v.shown("errorBanner"));
    }

    void thePasswordSheet() {
        REQUIRE_FUSE();
        OpenVault v;
        v.added("keep.txt");
        v.chooseSetting("gear.changePassword");
        QTRY_VERIFY(v.shown("passwordSheet"));
        QCOMPARE(v.text("passwordSheetTitle"), "Change Master Password");
        QQuickItem* button = v.app.item("changePasswordButton");
        QCOMPARE(button->property("text").toString(), "Change Password");

        v.app.typeInto("newPasswordField", "eight888");
        v.app.typeInto("confirmPasswordField", "eight888");
        QVERIFY(!button->isEnabled());
        v.app.typeInto("oldPasswordField", "not the password");
        v.app.click("changePasswordButton");
        QTRY_VERIFY(v.shown("passwordErrorLine"));
        QCOMPARE(v.text("passwordErrorLine"), "Current password is incorrect.");
        QTRY_VERIFY(button->isEnabled());
        QCOMPARE(v.text("newPasswordField"), "eight888");

        v.app.typeInto("oldPasswordField", kPassword);
        QTest::keyClick(v.app.window(), Qt::Key_Return);
        QTRY_VERIFY(!v.shown("passwordSheet"));
        QCOMPARE(v.text("successBannerText"), "Password changed.");
        QVERIFY(v.app.vault().isUnlocked());
        QCOMPARE(v.rowNames(), QStringList("keep.txt"));

        // The new password opens the vault from now on.
        v.app.vault().lock();
        QVERIFY_THROWS_EXCEPTION(VaultError, v.app.vault().unlock(kPassword));
        v.app.vault().unlock("eight888");
        QTRY_COMPARE(v.app.screenName(), "VaultView");

        // Shown again, the sheet starts empty; Cancel closes it.
        v.chooseSetting("gear.changePassword");
        QTRY_VERIFY(v.shown("passwordSheet"));
        QCOMPARE(v.text("oldPasswordField"), QString());
        QVERIFY(!v.shown("passwordErrorLine"));
        v.app.click("passwordCancelButton");
        QTRY_VERIFY(!v.shown("passwordSheet"));
    }

    void theAboutSheetIsTheWelcomePages() {
        REQUIRE_FUSE();
        OpenVault v;
        v.app.click("aboutButton");
        QTRY_VERIFY(v.shown("aboutPages"));
        QCOMPARE(v.app.item("aboutButton")->property("helpText").toString(), "About Morvanta");
        v.app.click("forwardButton");
        v.app.click("forwardButton");
        QTRY_COMPARE(v.text("forwardButton"), "Done");
        v.app.click("forwardButton");
        QTRY_VERIFY(!v.shown("aboutSheet"));
        QVERIFY(!v.browser()->property("showAbout").toBool());
    }
};

QTEST_MAIN(TestBrowserWindow)
#include "tst_browserwindow.moc"
