// The vault browser as a person uses it: the whole window offscreen over a real gocryptfs
// vault, with the file pickers answered for the user. Adding (by panel and by dropping),
// sorting, opening, moving out, the keyboard walk from unlock to lock, what a screen reader
// finds, backups and the password sheet, each judged by what is on disk and on screen.

#include "browser/BrowserTexts.h"
#include "browser/ItemTableModel.h"
#include "browser/VaultBrowser.h"
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

    // The status bar's texts come from their one source; the table sorts by byte count,
    // not by the text shown ("10.0 kB" < "9 bytes").
    void emptyVaultThenCountsAndSorting() {
        REQUIRE_FUSE();
        OpenVault v;
        QTRY_COMPARE(v.app.screenName(), "VaultView");
        QVERIFY(v.shown("emptyState"));
        QVERIFY(!v.shown("itemTableFrame"));
        QCOMPARE(v.text("countPillText"), itemCountText(0));
        QCOMPARE(v.text("idlePillText"), idleText(v.app.vault().idleTimeoutSeconds()));
        QCOMPARE(v.text("mountPathLabel"), v.app.vault().mountPoint().toLocalFile());
        QVERIFY(!v.app.item("actionsButton")->isEnabled());

        v.added("b-nine.txt", 9);
        v.added("A-ten-k.txt", 10000);
        QTRY_VERIFY(v.shown("itemTableFrame"));
        QVERIFY(!v.shown("emptyState"));
        QCOMPARE(v.text("countPillText"), itemCountText(2));
        v.app.click("header.Size");
        QTRY_COMPARE(v.app.item("cell.0.0")->property("display").toString(), "b-nine.txt");
        QCOMPARE(v.app.item("cell.0.1")->property("display").toString(), byteCountText(9));
        v.waitForFrame();
        v.app.click("header.Size");
        QTRY_COMPARE(v.app.item("cell.0.0")->property("display").toString(), "A-ten-k.txt");
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
        QVERIFY(!v.shown("successBanner"));
        // The one refused stays where it was; the others have moved in.
        QVERIFY(QFileInfo::exists(v.home.filePath("second/b.txt")));
        QVERIFY(!QFileInfo::exists(v.home.filePath("a.txt")));
        QVERIFY(!QFileInfo::exists(v.home.filePath("e.txt")));
        v.app.click("errorBannerDismiss");
        QVERIFY(!v.shown("errorBanner"));
    }

    void movingOut() {
        REQUIRE_FUSE();
        OpenVault v;
        const QUrl notes = v.added("notes.txt");
        v.added("diary.txt");
        QDir().mkpath(v.home.filePath("Elsewhere"));

        // A cancelled destination changes nothing.
        v.select(notes);
        v.chooseAction("moveOut");
        QCOMPARE(v.app.panels().openRequests.last(), VaultBrowser::moveOutPanelOptions());
        QCOMPARE(v.browser()->property("selection").toUrl(), notes);
        QVERIFY(v.rowNames().contains("notes.txt"));

        v.app.panels().openAnswers = {
            QList<QUrl>{QUrl::fromLocalFile(v.home.filePath("Elsewhere"))}};
        // The action counts as activity.
        QVERIFY(testsupport::restartsIdleDelay(v.app.vault(), [&] {
            v.chooseAction("moveOut");
            v.waitIdle();
        }));
        QVERIFY(QFileInfo::exists(v.home.filePath("Elsewhere/notes.txt")));
        QCOMPARE(v.rowNames(), QStringList("diary.txt"));
        // Moving out is its own feedback.
        QVERIFY(!v.shown("successBanner"));
        QVERIFY(!v.shown("errorBanner"));
        QCOMPARE(v.browser()->property("selection").toUrl(), QUrl());
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

        // Ctrl+L locks, unmounts and shrinks the window.
        QTest::keyClick(v.app.window(), Qt::Key_L, Qt::ControlModifier);
        QTRY_COMPARE(v.app.screenName(), "StandardUnlockView");
        QTRY_COMPARE(v.app.window()->size(), QSize(600, 600));
        QVERIFY(testsupport::mountsBelow(v.runtime.path()).isEmpty());
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
        QVERIFY(named("gear.idle5")->state().checked && !named("gear.idle1")->state().checked);
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

    void aBackupOpensWithThePassword() {
        REQUIRE_FUSE();
        OpenVault v;
        v.added("Taxes.pdf", 3000);
        v.added("Photos/cat.png", 5000);
        const QString backup = v.home.filePath("MorvantaVault-Backup.7z");
        v.app.panels().saveAnswers = {QUrl::fromLocalFile(backup)};
        v.chooseSetting("gear.backup");
        v.waitIdle();
        QVERIFY(v.shown("successBanner"));

        const QString out = v.home.filePath("unpacked");
        QCOMPARE(unpack(backup, kPassword, out), 0);
        QCOMPARE(testsupport::readFile(out + "/Taxes.pdf"), QByteArray(3000, 'm'));
        QCOMPARE(testsupport::readFile(out + "/cat.png"), QByteArray(5000, 'm'));
        QVERIFY(unpack(backup, "wrong", out + "2") != 0);
    }

    void thePasswordSheet() {
        REQUIRE_FUSE();
        OpenVault v;
        v.added("keep.txt");
        v.chooseSetting("gear.changePassword");
        QTRY_VERIFY(v.shown("passwordSheet"));
        QQuickItem* button = v.app.item("changePasswordButton");
        v.app.typeInto("newPasswordField", "eight888");
        v.app.typeInto("confirmPasswordField", "eight888");
        QVERIFY(!button->isEnabled());
        v.app.typeInto("oldPasswordField", "not the password");
        v.app.click("changePasswordButton");
        QTRY_VERIFY(v.shown("passwordErrorLine"));
        QTRY_VERIFY(button->isEnabled());
        QCOMPARE(v.text("newPasswordField"), "eight888");

        v.app.typeInto("oldPasswordField", kPassword);
        QTest::keyClick(v.app.window(), Qt::Key_Return);
        QTRY_VERIFY(!v.shown("passwordSheet"));
        QVERIFY(v.shown("successBanner"));
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
        for (int page = 0; page < 3; ++page)
            v.app.click("forwardButton");
        QTRY_VERIFY(!v.shown("aboutSheet"));
        QVERIFY(!v.browser()->property("showAbout").toBool());
    }
};

QTEST_MAIN(TestBrowserWindow)
#include "tst_browserwindow.moc"
