// The vault browser's rules without a window: the texts it builds from state, the table's
// order and keys, the row menu, what the screen does when a panel is
// cancelled, an idle delay chosen or the vault locked, and the password sheet.

#include "browser/BrowserTexts.h"
#include "browser/ItemTableModel.h"
#include "browser/PasswordChangeForm.h"
#include "browser/TableKeyboard.h"
#include "browser/VaultBrowser.h"
#include "support/RecordingRunner.h"
#include "support/ScriptedPanels.h"
#include "support/Trees.h"

#include <QAbstractItemModelTester>
#include <array>
#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using Comparators = QList<ItemTableModel::SortComparator>;

namespace {

VaultItem item(const QString& name, std::optional<qint64> size = 0,
               std::optional<QDateTime> date = QDateTime(QDate(2024, 3, 7), QTime(16, 5)),
               const QString& kind = QStringLiteral("plain text document")) {
    return {QUrl::fromLocalFile("/vault/" + name), name, size, kind, date};
}

// An engine that believes a plain folder is its open vault: enough for everything that only
// reads the vault (the list, the origins record, the remembered password).
struct OpenFakeVault {
    QTemporaryDir support;
    QTemporaryDir mount;
    RecordingRunner tool;
    std::unique_ptr<VaultManager> vault;

    explicit OpenFakeVault(const QStringList& files = {}) {
        for (const QString& file : files)
            testsupport::writeFile(mount.filePath(file), "x");
        vault = std::make_unique<VaultManager>(support.path(), tool.runner());
        QDir().mkpath(vault->bundlePath());
        tool.replies = {RecordingRunner::attached(mount.path())};
        vault->unlock("the password");
        tool.calls.clear();
    }
    QUrl url(const QString& name) const { return QUrl::fromLocalFile(mount.filePath(name)); }
};

// Whether `action` counts the automatic lock's delay again: the delay pending before it is
// short, the one set (but not started) is long, so only a restart pushes the deadline out.
bool restartsIdleDelay(VaultManager& vault, const std::function<void()>& action) {
    const double delay = vault.idleTimeoutSeconds();
    vault.setIdleTimeoutSeconds(1000);
    vault.restartIdleTimer();
    vault.setIdleTimeoutSeconds(5000);
    action();
    const bool restarted = vault.idleLockDeadline().remainingTime() > 2000 * 1000;
    if (vault.idleTimeoutSeconds() == 5000)
        vault.setIdleTimeoutSeconds(delay);
    return restarted;
}

} // namespace

class TestBrowserRules : public QObject {
    Q_OBJECT

private slots:
    // Status, sizes and dates as a file manager shows them, in the reader's locale.
    void textsBuiltFromState() {
        QCOMPARE(idleText(-60), "Auto-lock: off");
        QCOMPARE(idleText(119.9), "Auto-lock: 1m"); // whole minutes, cut toward zero
        QCOMPARE(itemCountText(1), "1 item");
        QCOMPARE(itemCountText(2), "2 items");
        const QLocale english(QLocale::English, QLocale::UnitedStates);
        QCOMPARE(byteCountText(std::nullopt, english), "\u2014");
        QCOMPARE(byteCountText(1, english), "1 byte");
        // Decimal units, as file managers count.
        QCOMPARE(byteCountText(123456789, english), "123.5 MB");
        QCOMPARE(byteCountText(1500, QLocale(QLocale::German)), "1,5 kB");
        const QDateTime date(QDate(2024, 3, 7), QTime(16, 5, 42));
        QCOMPARE(dateText(date, english), "Mar 7, 2024, 4:05 PM");
        QCOMPARE(dateText(date, QLocale(QLocale::German)), "7. M\u00e4rz 2024, 16:05");
    }

    // The prompt keeps a real extension and says so; otherwise the whole name is offered.
    void renameKeepsTheExtension() {
        const auto at = [](const QString& name) { return QUrl::fromLocalFile("/vault/" + name); };
        for (const auto& [name, prefill] : QList<std::pair<QString, QString>>{
                 {"Report.final.pdf", "Report.final"}, {"My Notes.app", "My Notes"},
                 {"Photos", "Photos"}, {".hidden-notes", ".hidden-notes"}, {"draft.", "draft."}}) {
            QCOMPARE(renamePrefill(at(name)), prefill);
            const bool kept = prefill != name;
            QCOMPARE(renameMessage(at(name)) != renameMessage(at("Photos")), kept);
            QVERIFY(!kept || renameMessage(at(name)).contains("\u201C" + name.mid(prefill.size())));
        }
    }

    // The table compares the items' sort keys, never the texts it shows. Names that differ
    // only in case are equal: the next comparator decides, and without one they keep their
    // order. A header click flips its column's order or puts that column first.
    void sorting() {
        const int byName = ItemTableModel::NameColumn, bySize = ItemTableModel::SizeColumn;
        const auto sorted = [](const QList<VaultItem>& items, const Comparators& by) {
            QStringList names;
            for (const VaultItem& i : ItemTableModel::sortedItems(items, by))
                names.append(i.name);
            return names;
        };
        const QList<VaultItem> sized = {item("b-nine.txt", 9), item("A-ten-k.txt", 10000),
                                        item("c-two-m.txt", 2000000),
                                        item("unmeasured", std::nullopt), item("empty.txt", 0)};
        QCOMPARE(sorted(sized, {{bySize, true}}),
                 QStringList({"unmeasured", "empty.txt", "b-nine.txt", "A-ten-k.txt", "c-two-m.txt"}));
        QCOMPARE(sorted(sized, {{bySize, false}}),
                 QStringList({"c-two-m.txt", "A-ten-k.txt", "b-nine.txt", "empty.txt", "unmeasured"}));
        const QList<VaultItem> cased = {item("notes", 5), item("Notes", 1), item("NOTES", 3)};
        QCOMPARE(sorted(cased, {{byName, true}}), QStringList({"notes", "Notes", "NOTES"}));
        QCOMPARE(sorted(cased, {{byName, false}, {bySize, true}}), QStringList({"Notes", "NOTES", "notes"}));
        const QList<VaultItem> dated = {item("new", 1, QDateTime(QDate(2024, 5, 1), QTime(9, 0))),
                                        item("undated", 1, std::nullopt),
                                        item("old", 1, QDateTime(QDate(1999, 1, 1), QTime(9, 0)))};
        QCOMPARE(sorted(dated, {{ItemTableModel::DateColumn, true}}), QStringList({"undated", "old", "new"}));

        ItemTableModel model;
        QCOMPARE(model.sortOrder(), Comparators({{byName, true}}));
        QSignalSpy changed(&model, &ItemTableModel::sortOrderChanged);
        model.sortBy(bySize);
        QCOMPARE(model.sortOrder(), Comparators({{bySize, true}, {byName, true}}));
        model.sortBy(bySize);
        QCOMPARE(model.sortOrder(), Comparators({{bySize, false}, {byName, true}}));
        model.sortBy(byName);
        QCOMPARE(model.sortOrder(), Comparators({{byName, true}, {bySize, false}}));
        model.sortBy(7);
        QCOMPARE(changed.count(), 3);
    }

    // The model over a listed vault, watched by Qt's model checker while the list changes
    // and the order flips; and the table by keyboard: movement stays within the rows, keys
    // name their actions, and typing jumps to names by their first letters.
    void modelAndKeyboard() {
        OpenFakeVault fake({"apple.txt", "Apricot.pdf", "banana.txt", "blueberry.txt", "cherry"});
        ItemTableModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        TableKeyboard keys;
        keys.setModel(&model);
        QCOMPARE(keys.rowAfterKey(Qt::Key_Down, -1, 3), -1);
        model.setVault(fake.vault.get());
        QCOMPARE(model.rowCount(), 5);
        QCOMPARE(model.data(model.index(1, 0)).toString(), "Apricot.pdf");
        QCOMPARE(model.data(model.index(1, 2)).toString(), "PDF document");
        QCOMPARE(model.rowOf(fake.url("banana.txt")), 2);

        const QList<std::array<int, 3>> moves = {
            {Qt::Key_Down, -1, 0}, {Qt::Key_End, -1, 4},    {Qt::Key_Down, 4, 4},
            {Qt::Key_Up, 0, 0},    {Qt::Key_PageDown, 1, 4}, {Qt::Key_PageUp, 4, 1},
            {Qt::Key_PageUp, 1, 0}, {Qt::Key_Home, 3, 0},   {Qt::Key_A, 2, -1}};
        for (const auto& [key, from, to] : moves)
            QCOMPARE(keys.rowAfterKey(key, from, 3), to);
        QCOMPARE(TableKeyboard::commandForKey(Qt::Key_Enter, Qt::KeypadModifier), "open");
        QCOMPARE(TableKeyboard::commandForKey(Qt::Key_F10, Qt::ShiftModifier), "menu");
        QCOMPARE(TableKeyboard::commandForKey(Qt::Key_F10, 0), "");
        QCOMPARE(TableKeyboard::commandForKey(Qt::Key_Delete, Qt::ControlModifier), "");
        // The same letter again goes round the names starting with it.
        QCOMPARE(keys.rowForTyped("a", -1), 0);
        QCOMPARE(keys.rowForTyped("a", 0), 1);
        QCOMPARE(keys.rowForTyped("A", 1), 0);
        TableKeyboard fresh;
        fresh.setModel(&model);
        QCOMPARE(fresh.rowForTyped("B", 0), 2);
        QCOMPARE(fresh.rowForTyped("l", 2), 3);
        QCOMPARE(fresh.rowForTyped("x", 3), -1);
        testsupport::writeFile(fake.mount.filePath("date.txt"), "xyz");
        fake.vault->refreshItems();
        QCOMPARE(model.urlAt(5), fake.url("date.txt"));
    }

    void rowMenuOffersRestoreOnlyWithAKnownOrigin() {
        OpenFakeVault fake({"Taxes.pdf", "copied-in.txt"});
        VaultBrowser browser;
        browser.setVault(fake.vault.get());
        auto actions = [&browser](const QUrl& url) {
            QStringList list;
            for (const QVariant& entry : browser.rowMenu(url))
                list.append(entry.toMap().value("action").toString());
            return list;
        };
        const QStringList withoutRestore = {"open", "rename", "moveOut", "divider", "delete"};
        QCOMPARE(actions(fake.url("Taxes.pdf")), withoutRestore);

        testsupport::writeFile(fake.mount.filePath(".morvanta-origins.json"),
                               R"({"Taxes.pdf":"\/home\/me\/Documents\/Taxes.pdf"})");
        QCOMPARE(actions(fake.url("Taxes.pdf")),
                 QStringList({"open", "rename", "restore", "moveOut", "divider", "delete"}));
        QCOMPARE(actions(fake.url("copied-in.txt")), withoutRestore);
        QVERIFY(browser.rowMenu(fake.url("Taxes.pdf")).last().toMap().value("destructive").toBool());

        // The confirmation's message is built from the record as it opens.
        browser.setSelection(fake.url("Taxes.pdf"));
        browser.setConfirmRestore(true);
        QCOMPARE(browser.restoreMessage(), restoreMessage("Taxes.pdf", QString("/home/me/Documents")));
        QVERIFY(browser.rowMenu(QUrl()).isEmpty());
    }

    // A cancelled panel, or a drop of nothing local, is no failure: no banner, and only the
    // action's opening restart of the idle timer. An idle choice sets the engine and counts
    // from now. A lock that fails leaves the engine's text; locked, drops are refused.
    void actionsThatDoNoWork() {
        OpenFakeVault fake({"a.txt"});
        ScriptedPanels panels;
        VaultBrowser browser;
        browser.setVault(fake.vault.get());
        browser.setPanels(&panels);
        browser.setSuccess("Renamed.");
        QVERIFY(restartsIdleDelay(*fake.vault, [&] { browser.addItem(); }));
        QVERIFY(panels.openRequests.last().canChooseFiles && panels.openRequests.last().canChooseDirectories &&
                panels.openRequests.last().allowsMultipleSelection);
        QCOMPARE(browser.success(), QString());
        browser.setError("Lock failed: busy");
        QVERIFY(restartsIdleDelay(*fake.vault, [&] { browser.backupVault(); }));
        QCOMPARE(panels.saveRequests.last().nameFieldStringValue, "MorvantaVault-Backup.7z");
        browser.setSelection(fake.url("a.txt"));
        QVERIFY(restartsIdleDelay(*fake.vault, [&] { browser.removeSelected(); }));
        QCoreApplication::processEvents(); // the panel answers
        QCOMPARE(browser.selection(), fake.url("a.txt"));
        QCOMPARE(browser.error(), QString());
        browser.setError("kept");
        QVERIFY(restartsIdleDelay(
            *fake.vault, [&] { QVERIFY(!browser.handleDrop({QUrl("https://example.org/a.txt"), QUrl()})); }));
        QCOMPARE(browser.error(), QString());
        QVERIFY(!browser.busy());
        QVERIFY(fake.tool.calls.isEmpty());
        QCOMPARE(fake.vault->items().size(), 1);

        browser.setIdle(15);
        QVERIFY(fake.vault->idleLockDeadline().remainingTime() > 890 * 1000);
        browser.setIdle(0);
        QVERIFY(fake.vault->idleLockDeadline().isForever());

        browser.setSuccess("Renamed.");
        const QString busy = "morvanta-hdiutil: detach failed - Resource busy.";
        fake.tool.replies = {{1, {}, busy}, {1, {}, busy}, {1, {}, "info failed"}};
        browser.lock();
        QCOMPARE(browser.success(), QString());
        QTRY_VERIFY(!browser.busy());
        QCOMPARE(browser.error(), "Lock failed: " + busy);
        QVERIFY(fake.vault->isUnlocked());
        fake.vault->publishLockedState();
        QVERIFY(!restartsIdleDelay(
            *fake.vault, [&] { QVERIFY(!browser.handleDrop({QUrl::fromLocalFile("/tmp/x")})); }));
        QCOMPARE(browser.error(), "Lock failed: " + busy);
        QVERIFY(!browser.busy());
    }

    // The button needs a current password and a new one of eight characters as a person
    // counts them, confirmed exactly. A wrong current password is refused without the tool,
    // the fields kept. A change runs once however often pressed, reports once and stays busy
    // as the sheet goes, until it is shown again.
    void changingThePassword() {
        OpenFakeVault fake;
        PasswordChangeForm form;
        form.setVault(fake.vault.get());
        const auto fill = [&form](const QString& oldPw, const QString& newPw, const QString& confirmPw) {
            form.setOldPw(oldPw);
            form.setNewPw(newPw);
            form.setConfirmPw(confirmPw);
        };
        for (const auto& [oldPw, newPw, confirmPw, enabled] : QList<std::tuple<QString, QString, QString, bool>>{
                 {"old", "12345678", "12345678", true},
                 {"old", "1234567", "1234567", false},
                 {"old", "12345678", "12345678 ", false},
                 {"", "12345678", "12345678", false},
                 {"12345678", "12345678", "12345678", true},
                 {"old", "cafe\u0301caf", "cafe\u0301caf", false}}) {
            fill(oldPw, newPw, confirmPw);
            QVERIFY2(form.canChange() == enabled, qPrintable(newPw + "/" + confirmPw));
        }
        QSignalSpy succeeded(&form, &PasswordChangeForm::succeeded);
        QSignalSpy dismissed(&form, &PasswordChangeForm::dismissRequested);
        fill("the passwort", "a new password", "a new password");
        form.change();
        QVERIFY(form.busy() && !form.canChange());
        QTRY_VERIFY(!form.busy());
        QVERIFY(!form.error().isEmpty() && form.canChange());
        QCOMPARE(form.oldPw(), "the passwort");
        QCOMPARE(form.newPw(), "a new password");
        QVERIFY(fake.tool.calls.isEmpty());

        form.setOldPw("the password");
        fake.tool.replies = {{0, {}, {}}, {0, {}, {}}, RecordingRunner::attached(fake.mount.path())};
        form.change();
        form.change();
        QTRY_COMPARE(dismissed.count(), 1);
        QCOMPARE(succeeded.count(), 1);
        QVERIFY(form.busy());
        QCOMPARE(fake.tool.calls.size(), 3);
        form.reset();
        QVERIFY(!form.busy());
    }
};

QTEST_MAIN(TestBrowserRules)
#include "tst_browserrules.moc"
