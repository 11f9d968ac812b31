// The vault's contents on a real gocryptfs vault: what each operation leaves on disk, in the
// list and in the origins registry, and that every refusal leaves all of it unchanged.

#include "engine/VaultManager.h"
#include "support/Errors.h"
#include "support/FuseHarness.h"
#include "support/RecordingFileLayer.h"
#include "support/Trees.h"
#include "support/VaultTestCase.h"
#include "platform/SystemCalls.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using testsupport::Detail;
using testsupport::errorOf;
using testsupport::readFile;
using testsupport::treeOf;
using testsupport::writeFile;


namespace {

dev_t deviceOf(int fd) {
    struct stat info {};
    return ::fstat(fd, &info) == 0 ? info.st_dev : 0;
}
dev_t deviceOf(const QString& path) {
    struct stat info {};
    return ::stat(QFile::encodeName(path), &info) == 0 ? info.st_dev : 0;
}

void setModeAndTime(const QString& path, mode_t mode, qint64 mtime) {
    QVERIFY(::chmod(QFile::encodeName(path), mode) == 0);
    const timespec times[2] = {{mtime, 0}, {mtime, 123456789}};
    QVERIFY(::utimensat(AT_FDCWD, QFile::encodeName(path), times, AT_SYMLINK_NOFOLLOW) == 0);
}

} // namespace

class TestContents : public VaultTestCase {
    Q_OBJECT

    // The user's side: the home folder without the vault's own (encrypted) files.
    QMap<QString, QByteArray> homeTree() const {
        QMap<QString, QByteArray> tree = treeOf(home(), Detail::ModesAndTimes);
        tree.removeIf([](const auto& entry) { return entry.key().startsWith(".support"); });
        tree.remove(".");
        return tree;
    }
    // Where the registry on disk says each item came from.
    QMap<QString, QString> registry() const {
        QMap<QString, QString> origins;
        const QJsonObject json = QJsonDocument::fromJson(readFile(inVault(".morvanta-origins.json"))).object();
        for (auto it = json.begin(); it != json.end(); ++it)
            origins.insert(it.key(), it.value().toString());
        return origins;
    }
    QStringList listedNames() const {
        QStringList names;
        for (const VaultItem& item : m_vault->items())
            names.append(item.name);
        return names;
    }
    // The list must always say what the disk says.
    void verifyListMatchesDisk() {
        const QDir root(m_vault->mountPoint().toLocalFile());
        QStringList onDisk = root.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden |
                                            QDir::System);
        onDisk.removeAll(".morvanta-origins.json");
        QStringList listed = listedNames();
        onDisk.sort();
        listed.sort();
        QCOMPARE(listed, onDisk);
    }

private slots:
    void init() {
        REQUIRE_FUSE();
        setUpVault();
    }
    void cleanup() { tearDownVault(); }

    void addAndRestoreKeepEverything() {
        // A document, a folder with a link, an empty folder and a hidden file, a program.
        QDir().mkpath(home("Docs/Taxes 2025/empty"));
        QVERIFY(writeFile(home("Docs/Report.pdf"), "%PDF-1.7 report"));
        setModeAndTime(home("Docs/Report.pdf"), 0640, 1600000000);
        QVERIFY(writeFile(home("Docs/Taxes 2025/receipt.txt"), QByteArray(70000, 'r')));
        QVERIFY(writeFile(home("Docs/Taxes 2025/.hidden"), "h"));
        QVERIFY(QFile::link("receipt.txt", home("Docs/Taxes 2025/latest")));
        setModeAndTime(home("Docs/Taxes 2025"), 0750, 1500000000);
        QVERIFY(writeFile(home("Docs/tool"), "#!/bin/sh\necho hi\n"));
        setModeAndTime(home("Docs/tool"), 0755, 1400000000);

        const QStringList names{"Report.pdf", "Taxes 2025", "tool"};
        QMap<QString, QMap<QString, QByteArray>> before;
        for (const QString& name : names)
            before[name] = treeOf(home("Docs/" + name), Detail::ModesAndTimes);

        for (const QString& name : names) {
            m_vault->addItem(url(home("Docs/" + name)));
            QVERIFY2(!QFileInfo::exists(home("Docs/" + name)), qPrintable(name));
            QCOMPARE(treeOf(inVault(name), Detail::ModesAndTimes), before[name]);
            QCOMPARE(registry().value(name), home("Docs/" + name));
            QCOMPARE(m_vault->restoreFolder(url(inVault(name))), home("Docs"));
            verifyListMatchesDisk();
        }
        QVERIFY(m_elevations.isEmpty());
        QCOMPARE(listedNames(), names);

        // Sizes count the bytes of regular files only; the link adds nothing.
        QCOMPARE(m_vault->items()[0].size, qint64(15));
        QCOMPARE(m_vault->items()[1].size, qint64(70001));
        QCOMPARE(m_vault->items()[1].kind, "folder");
        QVERIFY(m_vault->items()[1].dateAdded.has_value());

        for (const QString& name : names) {
            m_vault->restoreItem(url(inVault(name)));
            QCOMPARE(treeOf(home("Docs/" + name), Detail::ModesAndTimes), before[name]);
            QVERIFY(!registry().contains(name));
            verifyListMatchesDisk();
        }
        QVERIFY(m_vault->items().isEmpty());
    }

    // Seen from below the file code: the file systems actually flushed before an original
    // goes, not just that a flush was asked for.
    void copiesReachStableStorageBeforeOriginalsGo() {
        static QList<dev_t> flushed;
        flushed.clear();
        platform::sys::syncfs = [](int fd) {
            flushed.append(deviceOf(fd));
            return ::syncfs(fd);
        };
        const auto undo = qScopeGuard([] { platform::sys::syncfs = ::syncfs; });
        auto files = std::make_shared<RecordingFileLayer>();
        QList<dev_t> flushedFirst;
        files->beforeEach = [&](const QString& call) {
            if (call.startsWith("remove "))
                flushedFirst = flushed;
        };
        m_vault->setFileLayer(files);
        QVERIFY(writeFile(home("a.txt"), "a"));

        m_vault->addItem(url(home("a.txt")));
        // Copied under a staging name, flushed, named, flushed again, and only then removed:
        // down to the disk under the vault as well as the vault itself.
        const QStringList& calls = files->calls;
        const qsizetype named = calls.indexOf(QRegularExpression("^rename .*staging.* -> " +
                                                                 QRegularExpression::escape(inVault("a.txt")) + "$"));
        const qsizetype removed = calls.indexOf("remove " + home("a.txt"));
        QVERIFY(named > 0 && removed > named);
        QVERIFY(calls.mid(named, removed - named).contains("flush " + m_vault->bundlePath()));
        QVERIFY(flushedFirst.contains(deviceOf(inVault({}))));
        QVERIFY(flushedFirst.contains(deviceOf(m_vault->bundlePath())));

        flushed.clear();
        flushedFirst.clear();
        m_vault->restoreItem(url(inVault("a.txt")));
        QCOMPARE(files->calls.last(), "remove " + inVault("a.txt"));
        QVERIFY(flushedFirst.contains(deviceOf(home())));
    }

    void moveOutRenameAndDelete() {
        QVERIFY(writeFile(home("Notes.txt"), "notes"));
        QVERIFY(writeFile(home("Report.pdf"), "report"));
        QDir().mkpath(home("Photos/2024"));
        QVERIFY(writeFile(home("Photos/2024/a.jpg"), "jpeg"));
        for (const QString& name : QStringList{"Notes.txt", "Report.pdf", "Photos"})
            m_vault->addItem(url(home(name)));

        QDir().mkpath(home("Elsewhere"));
        m_vault->removeItem(url(inVault("Notes.txt")), url(home("Elsewhere")));
        QCOMPARE(readFile(home("Elsewhere/Notes.txt")), QByteArray("notes"));
        QVERIFY(!registry().contains("Notes.txt"));

        // The extension stays whatever is typed; the origin follows the new name.
        m_vault->renameItem(url(inVault("Report.pdf")), "  Final.docx \n");
        QCOMPARE(listedNames(), (QStringList{"Final.pdf", "Photos"}));
        QCOMPARE(registry(),
                 (QMap<QString, QString>{{"Final.pdf", home("Report.pdf")}, {"Photos", home("Photos")}}));
        m_vault->renameItem(url(inVault("Photos")), "Pics.old");
        QCOMPARE(listedNames(), (QStringList{"Final.pdf", "Pics.old"}));
        m_vault->renameItem(url(inVault("Final.pdf")), "Final"); // same name: nothing happens
        verifyListMatchesDisk();

        // Restoring after a rename puts the item back under the name it had outside.
        m_vault->restoreItem(url(inVault("Final.pdf")));
        QCOMPARE(readFile(home("Report.pdf")), QByteArray("report"));

        QCOMPARE(errorOf([&] { m_vault->deleteItem(url(inVault("Pics.old/2024"))); }),
                 "IO failed: Item is not inside the vault.");
        QVERIFY(QFileInfo::exists(inVault("Pics.old/2024/a.jpg")));
        m_vault->deleteItem(url(inVault("Pics.old")));
        QVERIFY(!QFileInfo::exists(inVault("Pics.old")));
        QVERIFY(m_vault->items().isEmpty());
        QCOMPARE(readFile(inVault(".morvanta-origins.json")), QByteArray("{}"));
    }

    void refusalsChangeNothing() {
        QVERIFY(writeFile(home("Notes.txt"), "in the vault"));
        QDir().mkpath(home("Docs"));
        QVERIFY(writeFile(home("Docs/Report.pdf"), "report"));
        m_vault->addItem(url(home("Notes.txt")));
        m_vault->addItem(url(home("Docs/Report.pdf")));
        QVERIFY(writeFile(home("Notes.txt"), "a second one"));
        QVERIFY(writeFile(inVault("copied-in.txt"), "no origin"));
        QVERIFY(writeFile(inVault("plain"), "no extension"));
        m_vault->refreshItems();

        const auto vaultBefore = treeOf(m_vault->mountPoint().toLocalFile(), Detail::ModesAndTimes);
        const auto homeBefore = homeTree();
        const auto rejects = [&](const QString& expected, const std::function<void()>& operation) {
            QCOMPARE(errorOf(operation), expected);
            QCOMPARE(treeOf(m_vault->mountPoint().toLocalFile(), Detail::ModesAndTimes), vaultBefore);
        };

        rejects("IO failed: Item with same name already in vault.",
                [&] { m_vault->addItem(url(home("Notes.txt"))); });
        // Names the list hides are reserved: an item under one would be out of reach.
        for (const QString reserved : {".morvanta-origins.json", ".DS_Store", ".fseventsd",
                                        ".morvanta-staging-1f"}) {
            QVERIFY(writeFile(home(reserved), "mine"));
            rejects(QString::fromUtf8("IO failed: “%1” is a name the vault keeps for itself. Rename "
                                      "the item, then add it.").arg(reserved),
                    [&] { m_vault->addItem(url(home(reserved))); });
            QVERIFY(QFile::remove(home(reserved)));
            rejects(QString::fromUtf8("IO failed: “%1” is a name the vault keeps for itself. Choose "
                                      "another name.").arg(reserved),
                    [&] { m_vault->renameItem(url(inVault("plain")), reserved); });
        }
        rejects("IO failed: Original location is unknown for this item.",
                [&] { m_vault->restoreItem(url(inVault("copied-in.txt"))); });
        rejects("IO failed: File with same name exists at destination.",
                [&] { m_vault->removeItem(url(inVault("Notes.txt")), url(home())); });
        for (const QString& bad : QStringList{"   ", "a/b", ".", "..", " ..pdf "})
            rejects(QString::fromUtf8("IO failed: Enter a valid name (no “/”)."),
                    [&] { m_vault->renameItem(url(inVault("Report.pdf")), bad); });
        rejects(QString::fromUtf8("IO failed: An item named “Notes.txt” is already in the vault."),
                [&] { m_vault->renameItem(url(inVault("copied-in.txt")), "Notes"); });
        rejects("IO failed: Something already exists at the original location:\n" + home("Notes.txt"),
                [&] { m_vault->restoreItem(url(inVault("Notes.txt"))); });
        QCOMPARE(homeTree(), homeBefore);

        QVERIFY(QDir(home("Docs")).removeRecursively());
        rejects("IO failed: Original folder no longer exists:\n" + home("Docs"),
                [&] { m_vault->restoreItem(url(inVault("Report.pdf"))); });
        QVERIFY(!QFileInfo::exists(home("Docs")));
        QCOMPARE(registry().size(), 2);

        m_vault->lock();
        for (const auto& operation : std::initializer_list<std::function<void()>>{
                 [&] { m_vault->addItem(url(home("Notes.txt"))); },
                 [&] { m_vault->restoreItem(url(home("x"))); },
                 [&] { m_vault->renameItem(url(home("x")), "y"); },
                 [&] { m_vault->deleteItem(url(home("x"))); }})
            QCOMPARE(errorOf(operation), "Vault not mounted.");
    }

    void nothingThatHoldsTheVaultIsAdded() {
        QVERIFY(writeFile(inVault("inside.txt"), "x"));
        const QString support = home(".support");
        const QStringList guarded{support, support + "/vault.gocryptfs", home(), inVault("inside.txt"),
                                  m_vault->mountPoint().toLocalFile(), m_runtime->path(),
                                  support + "/../.support/./vault.gocryptfs"};
        const auto before = treeOf(support);
        for (const QString& path : guarded) {
            const QString name = url(path).fileName();
            QCOMPARE(errorOf([&] { m_vault->addItem(url(path)); }),
                     QString::fromUtf8("“%1” can’t be added — it’s a protected system item, or you "
                                       "don’t have permission to move it from its current location.")
                         .arg(name));
        }
        QCOMPARE(treeOf(support), before);
        QVERIFY(QFileInfo::exists(inVault("inside.txt")));

        // A link to the vault is only a link: adding it moves the link.
        QVERIFY(QFile::link(support, home("shortcut")));
        m_vault->addItem(url(home("shortcut")));
        QVERIFY(QFileInfo(inVault("shortcut")).isSymLink());
        QVERIFY(QFileInfo(support + "/vault.gocryptfs/gocryptfs.conf").isFile());
    }

    void anOriginalThatCannotBeRemovedStaysWhole() {
        if (::geteuid() != 0)
            QSKIP("needs root to mount a read-only folder");
        // A folder the test cannot remove anything from, even as root: a read-only file system.
        testsupport::ScopedTmpfs protectedFolder(home("Protected"));
        QVERIFY(protectedFolder.mounted());
        QDir().mkpath(home("Protected/App/lib"));
        QVERIFY(writeFile(home("Protected/App/lib/core.so"), "binary"));
        QVERIFY(writeFile(home("Protected/App/run"), "#!/bin/sh"));
        QVERIFY(protectedFolder.setReadOnly(true));
        const auto before = treeOf(home("Protected/App"), Detail::ModesAndTimes);

        // Refused prompt: nothing of the app in the vault, the original complete.
        QCOMPARE(errorOf([&] { m_vault->addItem(url(home("Protected/App"))); }),
                 QString::fromUtf8("“App” wasn’t added — its original couldn’t be removed from its "
                                   "current location (the administrator prompt was cancelled or "
                                   "failed). Nothing was left in the vault."));
        QCOMPARE(m_elevations.size(), 1);
        QCOMPARE(m_elevations[0].first(), "/usr/bin/pkexec");
        QVERIFY(m_elevations[0][1].endsWith("/morvanta-remove-original"));
        QCOMPARE(m_elevations[0].last(), home("Protected/App"));
        QVERIFY(!QFileInfo::exists(inVault("App")));
        QCOMPARE(treeOf(home("Protected/App"), Detail::ModesAndTimes), before);
        QVERIFY(registry().isEmpty());

        // Consent given: the helper removes the original, and the add completes.
        m_vault->setElevationRunner([&](const QStringList& command, const QByteArray& survey) {
            protectedFolder.setReadOnly(false);
            QProcess helper;
            helper.start(command[1], command.mid(2));
            helper.write(survey);
            helper.closeWriteChannel();
            return helper.waitForFinished() ? helper.exitCode() : -1;
        });
        m_vault->addItem(url(home("Protected/App")));
        QVERIFY(!QFileInfo::exists(home("Protected/App")));
        QCOMPARE(treeOf(inVault("App"), Detail::ModesAndTimes), before);
    }

    // A copy that fails part-way, on the way in or out, leaves the item whole where it was
    // and nothing of it where it was going.
    void aCopyThatFailsPartWayCostsNothing_data() {
        QTest::addColumn<QString>("move");
        QTest::addColumn<QString>("error");
        QTest::newRow("add, the vault fills up") << "add" << "No space left on device";
        QTest::newRow("add, a write fails when the copy is closed") << "add late" << "Input/output error";
        QTest::newRow("restore, the original place fills up") << "restore" << "No space left on device";
        QTest::newRow("move out, the folder fills up") << "move out" << "No space left on device";
    }
    void aCopyThatFailsPartWayCostsNothing() {
        QFETCH(QString, move);
        QFETCH(QString, error);
        if (::geteuid() != 0)
            QSKIP("needs root to mount a small file system");
        std::unique_ptr<testsupport::ScopedTmpfs> small;
        if (move == "add") { // the vault lives on a file system too small for the item
            m_vault->lock();
            small = std::make_unique<testsupport::ScopedTmpfs>(home("small"), "size=4m");
            openVault(home("small/support"));
        }
        QDir().mkpath(home("Place/Big"));
        QVERIFY(writeFile(home("Place/Big/first.txt"), "small"));
        QVERIFY(writeFile(home("Place/Big/second.bin"), QByteArray(6 << 20, 'x')));
        QString item = home("Place/Big");
        if (move == "restore" || move == "move out") {
            m_vault->addItem(url(item));
            item = inVault("Big");
            small = std::make_unique<testsupport::ScopedTmpfs>(home("Place"), "size=4m");
        }
        QVERIFY(!small || small->mounted());
        static const QByteArray failingClose = "second.bin";
        if (move == "add late")
            platform::sys::close = [](int fd) {
                const QByteArray path = QFile::symLinkTarget(QString("/proc/self/fd/%1").arg(fd)).toUtf8();
                const int result = ::close(fd);
                if (!path.endsWith(failingClose))
                    return result;
                errno = EIO;
                return -1;
            };
        const auto undo = qScopeGuard([] { platform::sys::close = ::close; });
        const auto before = treeOf(item, Detail::ModesAndTimes);
        const auto homeBefore = treeOf(home("Place"));

        const QString message = errorOf([&] {
            if (move == "restore")
                m_vault->restoreItem(url(item));
            else if (move == "move out")
                m_vault->removeItem(url(item), url(home("Place")));
            else
                m_vault->addItem(url(item));
        });
        QVERIFY2(message.contains(error), qPrintable(message));
        QCOMPARE(treeOf(item, Detail::ModesAndTimes), before);
        QCOMPARE(treeOf(home("Place")), homeBefore);
        QCOMPARE(QDir(inVault({})).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden).filter("staging"),
                 QStringList());
        QCOMPARE(listedNames(), item.startsWith(home()) ? QStringList() : QStringList{"Big"});
        m_vault->lock();
    }

    void hostileNamesSurvive_data() {
        QTest::addColumn<QString>("name");
        QTest::newRow("spaces and quotes") << " it's \"quoted\" ";
        QTest::newRow("NFC") << QString::fromUtf8("Caf\u00e9.txt");
        QTest::newRow("NFD") << QString::fromUtf8("Cafe\u0301.txt");
        QTest::newRow("leading dot") << ".hidden-notes";
        QTest::newRow("leading dash") << "-rf";
        QTest::newRow("newline and backslash") << "two\nlines\\.txt";
        QTest::newRow("255 bytes") << QString(251, 'n') + ".txt";
        QTest::newRow("255 bytes of UTF-8") << QString(125, QChar(0x00e9)) + "x.md";
    }
    void hostileNamesSurvive() {
        QFETCH(QString, name);
        QCOMPARE(QFile::encodeName(name).size() <= 255, true);
        QVERIFY(writeFile(home(name), "payload"));
        m_vault->addItem(url(home(name)));
        QCOMPARE(listedNames(), QStringList{name});
        QCOMPARE(m_vault->items()[0].size, qint64(7));

        const QString renamed = "renamed " + name.left(40);
        m_vault->renameItem(url(inVault(name)), renamed);
        const QString finalName = m_vault->items()[0].name;
        QVERIFY(finalName.startsWith("renamed "));
        m_vault->restoreItem(url(inVault(finalName)));
        QCOMPARE(readFile(home(name)), QByteArray("payload"));
        QVERIFY(m_vault->items().isEmpty());
    }

    void registryReadRule_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("array") << QByteArray("[1,2]") << QStringList{};
        QTest::newRow("not JSON") << QByteArray("not json") << QStringList{};
        QTest::newRow("truncated") << QByteArray("{\"a.txt\":\"/home/u/a.t") << QStringList{};
        QTest::newRow("a number among texts") << QByteArray("{\"a\":\"/x/a\",\"b\":2}") << QStringList{};
        QTest::newRow("escaped slashes") << QByteArray("{\"a.txt\":\"\\/home\\/u\\/a.txt\"}")
                                         << QStringList{"a.txt"};
        QTest::newRow("case matters") << QByteArray("{\"Photo.JPG\":\"/p/Photo.JPG\",\"photo.jpg\":\"/q/photo.jpg\"}")
                                      << QStringList{"Photo.JPG", "photo.jpg"};
    }
    void registryReadRule() {
        QFETCH(QByteArray, file);
        QFETCH(QStringList, names);
        QVERIFY(writeFile(inVault(".morvanta-origins.json"), file));
        if (names.contains("a.txt"))
            QCOMPARE(m_vault->restoreFolder(url(inVault("a.txt"))), "/home/u");

        // The next change rewrites the file with what it knew; a damaged file knew nothing.
        QVERIFY(writeFile(home("new.txt"), "n"));
        m_vault->addItem(url(home("new.txt")));
        QStringList known = names + QStringList{"new.txt"};
        known.sort();
        QCOMPARE(registry().keys(), known);
        QCOMPARE(QFileInfo(inVault(".morvanta-origins.json")).permissions() & 0x0077,
                 QFileDevice::Permissions());
    }

    void listsWhatTheVaultHolds() {
        for (const QString& name : QStringList{"beta", "Alpha", "alpha 2", ".hidden-notes",
                                               ".DS_Store", ".Trashes", "Report 2", "report 3"})
            QVERIFY(writeFile(inVault(name), name.toUtf8()));
        QDir().mkpath(inVault(".fseventsd"));
        QDir().mkpath(inVault("empty"));
        m_vault->refreshItems();
        QCOMPARE(listedNames(),
                 (QStringList{".hidden-notes", "Alpha", "alpha 2", "beta", "empty", "Report 2",
                              "report 3"}));
        const VaultItem& empty = m_vault->items()[4];
        QCOMPARE(empty.size, qint64(0));
        QCOMPARE(empty.kind, "folder");
        QCOMPARE(empty.url, url(inVault("empty")));
    }
};

QTEST_GUILESS_MAIN(TestContents)
#include "tst_contents.moc"
