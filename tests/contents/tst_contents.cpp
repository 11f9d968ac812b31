// The vault's contents on a real gocryptfs vault: what each operation leaves on disk, in the
// list and in the origins registry, and that every refusal leaves all of it unchanged.

#include "engine/VaultManager.h"
#include "platform/SystemCalls.h"
#include "support/Errors.h"
#include "support/FuseHarness.h"
#include "support/RecordingFileLayer.h"
#include "support/Trees.h"
#include "support/VaultTestCase.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

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

} // namespace

class TestContents : public VaultTestCase {
    Q_OBJECT

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
    // Both sides as the user sees them: the home folder, and the vault's plain view of itself.
    QMap<QString, QByteArray> bothSides() const {
        QMap<QString, QByteArray> tree = treeOf(home(), Detail::ModesAndTimes);
        tree.removeIf([](const auto& entry) { return entry.key().startsWith(".support") || entry.key() == "."; });
        const auto inside = treeOf(inVault({}), Detail::ModesAndTimes);
        for (auto it = inside.begin(); it != inside.end(); ++it)
            tree.insert("vault/" + it.key(), it.value());
        return tree;
    }

private slots:
    void init() {
        REQUIRE_FUSE();
        setUpVault();
    }
    void cleanup() { tearDownVault(); }

    void itemsGoInAndComeBackOut() {
        QDir().mkpath(home("Docs/Taxes/empty"));
        QVERIFY(writeFile(home("Docs/Report.pdf"), "%PDF-1.7 report"));
        QVERIFY(writeFile(home("Docs/Taxes/receipt.txt"), QByteArray(70000, 'r')));
        QVERIFY(QFile::link("receipt.txt", home("Docs/Taxes/latest")));
        const auto before = treeOf(home("Docs"));
        m_vault->addItem(url(home("Docs/Report.pdf")));
        m_vault->addItem(url(home("Docs/Taxes")));
        QVERIFY(treeOf(home("Docs")).isEmpty());
        QCOMPARE(registry(), (QMap<QString, QString>{{"Report.pdf", home("Docs/Report.pdf")},
                                                     {"Taxes", home("Docs/Taxes")}}));
        // Sizes count the bytes of regular files only; the link adds nothing.
        QCOMPARE(m_vault->items()[0].size, qint64(15));
        QCOMPARE(m_vault->items()[1].size, qint64(70000));

        // The extension stays whatever is typed; the origin follows the new name, and the item
        // goes back under the name it had outside.
        m_vault->renameItem(url(inVault("Report.pdf")), "  Final.docx \n");
        QCOMPARE(listedNames(), (QStringList{"Final.pdf", "Taxes"}));
        m_vault->restoreItem(url(inVault("Final.pdf")));
        m_vault->restoreItem(url(inVault("Taxes")));
        QCOMPARE(treeOf(home("Docs")), before);
        QVERIFY(m_vault->items().isEmpty());
        QVERIFY(registry().isEmpty());

        // Moved out elsewhere or deleted: gone from the vault and from the registry.
        m_vault->addItem(url(home("Docs/Report.pdf")));
        m_vault->addItem(url(home("Docs/Taxes")));
        m_vault->removeItem(url(inVault("Report.pdf")), url(home()));
        QCOMPARE(readFile(home("Report.pdf")), "%PDF-1.7 report");
        QVERIFY(testsupport::thrownBy([&] { m_vault->deleteItem(url(inVault("Taxes/empty"))); }));
        QVERIFY(QFileInfo::exists(inVault("Taxes/empty")));
        m_vault->deleteItem(url(inVault("Taxes")));
        QVERIFY(!QFileInfo::exists(inVault("Taxes")));
        QVERIFY(m_vault->items().isEmpty());
        QCOMPARE(readFile(inVault(".morvanta-origins.json")), "{}");
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
        // Copied under a staging name, named, flushed again, and only then removed: down to
        // the disk under the vault as well as the vault itself.
        const QStringList& calls = files->calls;
        const qsizetype named = calls.indexOf(QRegularExpression(
            "^rename .*staging.* -> " + QRegularExpression::escape(inVault("a.txt")) + "$"));
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

    void refusalsChangeNothing() {
        QVERIFY(writeFile(home("Notes.txt"), "in the vault"));
        QDir().mkpath(home("Docs"));
        QVERIFY(writeFile(home("Docs/Report.pdf"), "report"));
        m_vault->addItem(url(home("Notes.txt")));
        m_vault->addItem(url(home("Docs/Report.pdf")));
        QVERIFY(writeFile(home("Notes.txt"), "a second one"));
        QVERIFY(writeFile(inVault("copied-in.txt"), "no origin"));
        QVERIFY(writeFile(inVault("plain"), "no extension"));
        QVERIFY(writeFile(inVault(".Trashes"), "the desktop's"));
        QDir().mkpath(inVault(".fseventsd"));
        m_vault->refreshItems();
        // The desktop's own files are not items; the rest sorts as people sort names.
        QCOMPARE(listedNames(), (QStringList{"copied-in.txt", "Notes.txt", "plain", "Report.pdf"}));

        const auto rejects = [&](const std::function<void()>& operation, const QString& reason = {}) {
            const auto before = bothSides();
            const QString message = errorOf(operation);
            QVERIFY2(message != "<no error>" && message.contains(reason), qPrintable(message));
            QCOMPARE(bothSides(), before);
        };
        rejects([&] { m_vault->addItem(url(home("Notes.txt"))); });
        // Names the list hides are reserved: an item under one would be out of reach.
        for (const QString reserved : {".morvanta-origins.json", ".DS_Store", ".morvanta-staging-1f"}) {
            QVERIFY(writeFile(home(reserved), "mine"));
            rejects([&] { m_vault->addItem(url(home(reserved))); });
            QVERIFY(QFile::remove(home(reserved)));
            rejects([&] { m_vault->renameItem(url(inVault("plain")), reserved); });
        }
        rejects([&] { m_vault->restoreItem(url(inVault("copied-in.txt"))); });
        rejects([&] { m_vault->removeItem(url(inVault("Notes.txt")), url(home())); });
        rejects([&] { m_vault->restoreItem(url(inVault("Notes.txt"))); });
        rejects([&] { m_vault->renameItem(url(inVault("copied-in.txt")), "Notes"); });
        for (const QString bad : {"   ", "a/b", ".", ".."})
            rejects([&] { m_vault->renameItem(url(inVault("Report.pdf")), bad); }, "valid name");
        QVERIFY(QDir(home("Docs")).removeRecursively());
        rejects([&] { m_vault->restoreItem(url(inVault("Report.pdf"))); });
        QCOMPARE(registry().size(), 2);

        m_vault->lock();
        for (const auto& operation : std::initializer_list<std::function<void()>>{
                 [&] { m_vault->addItem(url(home("Notes.txt"))); },
                 [&] { m_vault->restoreItem(url(home("x"))); },
                 [&] { m_vault->renameItem(url(home("x")), "y"); },
                 [&] { m_vault->deleteItem(url(home("x"))); }})
            QCOMPARE(errorOf(operation), "Vault not mounted.");
        QCOMPARE(readFile(home("Notes.txt")), "a second one");
    }

    void anOriginalThatCannotBeRemovedStaysWhole() {
        if (::geteuid() != 0)
            QSKIP("needs root to mount a read-only folder");
        // A folder nothing can be removed from, even by root: a read-only file system.
        testsupport::ScopedTmpfs protectedFolder(home("Protected"));
        QVERIFY(protectedFolder.mounted());
        QDir().mkpath(home("Protected/App/lib"));
        QVERIFY(writeFile(home("Protected/App/lib/core.so"), "binary"));
        QVERIFY(protectedFolder.setReadOnly(true));
        const auto before = treeOf(home("Protected/App"), Detail::ModesAndTimes);

        // Refused prompt: nothing of the app in the vault, the original complete.
        QVERIFY(testsupport::thrownBy([&] { m_vault->addItem(url(home("Protected/App"))); }));
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
        if (move == "add late")
            platform::sys::close = [](int fd) {
                const QString path = QFile::symLinkTarget(QString("/proc/self/fd/%1").arg(fd));
                const int result = ::close(fd);
                if (!path.endsWith("second.bin"))
                    return result;
                errno = EIO;
                return -1;
            };
        const auto undo = qScopeGuard([] { platform::sys::close = ::close; });
        const auto before = treeOf(item, Detail::ModesAndTimes);
        const auto placeBefore = treeOf(home("Place"));

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
        QCOMPARE(treeOf(home("Place")), placeBefore);
        QCOMPARE(QDir(inVault({})).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden).filter("staging"),
                 QStringList());
        QCOMPARE(listedNames(), item.startsWith(home()) ? QStringList() : QStringList{"Big"});
        m_vault->lock();
    }

    void hostileNamesSurvive_data() {
        QTest::addColumn<QString>("name");
        QTest::newRow("newline and backslash") << "two\nlines\\.txt";
        QTest::newRow("255 bytes of UTF-8") << QString(125, QChar(0x00e9)) + "x.md";
    }
    void hostileNamesSurvive() {
        QFETCH(QString, name);
        QVERIFY(writeFile(home(name), "payload"));
        m_vault->addItem(url(home(name)));
        QCOMPARE(listedNames(), QStringList{name});
        m_vault->restoreItem(url(inVault(name)));
        QCOMPARE(readFile(home(name)), "payload");
        QVERIFY(m_vault->items().isEmpty());
    }

    // A damaged registry counts as empty, and the next change rewrites it with what it knew.
    void registryReadRule_data() {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QStringList>("names");
        QTest::newRow("not JSON") << QByteArray("not json") << QStringList{};
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
        QVERIFY(writeFile(home("new.txt"), "n"));
        m_vault->addItem(url(home("new.txt")));
        names.append("new.txt");
        names.sort();
        QCOMPARE(registry().keys(), names);
        QCOMPARE(QFileInfo(inVault(".morvanta-origins.json")).permissions() & 0x0077,
                 QFileDevice::Permissions());
    }
};

QTEST_GUILESS_MAIN(TestContents)
#include "tst_contents.moc"
