// The vault's contents on a real gocryptfs vault: what each operation leaves on disk, in the
// list and in the origins registry, and that every refusal leaves all of it unchanged.

#include "platform/SystemCalls.h"
#include "support/Errors.h"
#include "support/RecordingFileLayer.h"
#include "support/Trees.h"
#include "support/VaultTestCase.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace testsupport;

class TestContents : public VaultTestCase {
    Q_OBJECT

    static dev_t deviceOf(const QString& path) {
        struct stat info {};
        return ::stat(QFile::encodeName(path), &info) == 0 ? info.st_dev : 0;
    }

    // Where the registry on disk says each item came from.
    QJsonObject registry() const {
        return QJsonDocument::fromJson(readFile(inVault(".morvanta-origins.json"))).object();
    }

private slots:
    void init() {
        REQUIRE_FUSE();
        setUpVault();
    }
    void cleanup() { tearDownVault(); }

    // Seen from below the file code on the way: the file systems actually flushed before an
    // original goes, not just that a flush was asked for. And an added original leaves no
    // trace among the desktop's recent files.
    void itemsGoInAndComeBackOut() {
        static QList<dev_t> flushed;
        flushed.clear();
        platform::sys::syncfs = [](int fd) {
            flushed.append(deviceOf(QString("/proc/self/fd/%1").arg(fd)));
            return ::syncfs(fd);
        };
        QTemporaryDir desktop;
        qputenv("XDG_DATA_HOME", QFile::encodeName(desktop.path()));
        const auto undo = qScopeGuard([] {
            platform::sys::syncfs = ::syncfs;
            qunsetenv("XDG_DATA_HOME");
        });
        const QByteArray href = url(home("Docs/Report.pdf")).toEncoded();
        QVERIFY(writeFile(desktop.filePath("recently-used.xbel"),
                          "<?xml version=\"1.0\"?>\n<xbel version=\"1.0\"><bookmark href=\"" + href +
                              "\" added=\"2026-01-01T00:00:00Z\"><info/></bookmark></xbel>"));
        QVERIFY(writeFile(home("victim"), "keep"));
        QVERIFY(QFile::link(home("victim"), inVault(".morvanta-origins.json.partial")));
        auto files = std::make_shared<RecordingFileLayer>();
        QList<dev_t> flushedFirst;
        files->beforeEach = [&](const QString& call) {
            if (call.startsWith("remove "))
                flushedFirst = flushed;
        };
        m_vault->setFileLayer(files);
        const QString taxes = "Taxes\n\\" + QString(124, QChar(0x00e9)); // 255 bytes, on two lines
        QDir().mkpath(home("Docs/" + taxes + "/empty"));
        QVERIFY(writeFile(home("Docs/Report.pdf"), "%PDF-1.7 report"));
        QVERIFY(writeFile(home("Docs/" + taxes + "/receipt.txt"), QByteArray(70000, 'r')));
        QVERIFY(QFile::link("receipt.txt", home("Docs/" + taxes + "/latest")));
        const auto before = treeOf(home("Docs"));

        m_vault->addItem(url(home("Docs/Report.pdf")));
        // Copied under a staging name, named, flushed again, and only then removed: down to
        // the disk under the vault as well as the vault itself.
        const QStringList& calls = files->calls;
        const qsizetype named = calls.indexOf(QRegularExpression(
            "^rename .*staging.* -> " + QRegularExpression::escape(inVault("Report.pdf")) + "$"));
        const qsizetype removed = calls.indexOf("remove " + home("Docs/Report.pdf"));
        QVERIFY(named > 0 && removed > named);
        QVERIFY(calls.mid(named, removed - named).contains("flush " + m_vault->bundlePath()));
        QVERIFY(flushedFirst.contains(deviceOf(inVault({}))));
        QVERIFY(flushedFirst.contains(deviceOf(m_vault->bundlePath())));
        QVERIFY(!readFile(desktop.filePath("recently-used.xbel")).contains(href));
        // The registry is replaced whole, never rewritten in place (nor through a planted
        // link): one opened before an add still reads as it was.
        QFile registryBefore(inVault(".morvanta-origins.json"));
        QVERIFY(registryBefore.open(QIODevice::ReadOnly));
        m_vault->addItem(url(home("Docs/" + taxes)));
        QCOMPARE(QJsonDocument::fromJson(registryBefore.readAll()).object().keys(), QStringList{"Report.pdf"});
        QCOMPARE(readFile(home("victim")), "keep");
        QVERIFY(treeOf(home("Docs")).isEmpty());
        QCOMPARE(registry(), (QJsonObject{{"Report.pdf", home("Docs/Report.pdf")}, {taxes, home("Docs/" + taxes)}}));
        // Sizes count the bytes of regular files only; the link adds nothing.
        QCOMPARE(m_vault->items()[0].size, qint64(15));
        QCOMPARE(m_vault->items()[1].size, qint64(70000));

        // The extension stays whatever is typed; the origin follows the new name, and the item
        // goes back under the name it had outside.
        m_vault->renameItem(url(inVault("Report.pdf")), "  Final.docx \n");
        QCOMPARE(listedNames(), (QStringList{"Final.pdf", taxes}));
        flushed.clear();
        m_vault->restoreItem(url(inVault("Final.pdf")));
        QCOMPARE(files->calls.last(), "remove " + inVault("Final.pdf"));
        QVERIFY(flushedFirst.contains(deviceOf(home())));
        m_vault->restoreItem(url(inVault(taxes)));
        QCOMPARE(treeOf(home("Docs")), before);
        QVERIFY(m_vault->items().isEmpty());
        QVERIFY(registry().isEmpty());

        // Deleted whole, never from inside: gone from the vault and from the registry.
        m_vault->addItem(url(home("Docs/" + taxes)));
        QVERIFY(thrownBy([&] { m_vault->deleteItem(url(inVault(taxes + "/empty"))); }));
        QVERIFY(QFileInfo::exists(inVault(taxes + "/empty")));
        m_vault->deleteItem(url(inVault(taxes)));
        QVERIFY(!QFileInfo::exists(inVault(taxes)) && m_vault->items().isEmpty());
        QCOMPARE(readFile(inVault(".morvanta-origins.json")), "{}");
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

        // Both sides as they are on disk: the home folder holds the vault's encrypted files.
        const auto rejects = [&](const std::function<void()>& operation, const QString& reason = {}) {
            const auto before = treeOf(home(), Detail::Everything);
            const QString message = errorOf(operation);
            QVERIFY2(message != "<no error>" && message.contains(reason), qPrintable(message));
            QCOMPARE(treeOf(home(), Detail::Everything), before);
        };
        rejects([&] { m_vault->addItem(url(home("Notes.txt"))); });
        // Nothing that holds the vault, nor the system, is ever moved; a link to them moves as
        // a link.
        const QString support = home(".support");
        for (const QString& path : {support, support + "/vault.gocryptfs", home(), inVault("Notes.txt"), inVault({}),
                                    m_runtime->path(), support + "/../.support/./vault.gocryptfs", QString("/"),
                                    QString("/usr/bin"), QString("/usr/../etc/passwd"), QDir::homePath()})
            rejects([&] { m_vault->addItem(url(path)); }, "protected system item");
        QVERIFY(QFile::link(support, home("shortcut")));
        m_vault->addItem(url(home("shortcut")));
        QVERIFY(QFileInfo(inVault("shortcut")).isSymLink());
        QVERIFY(QFileInfo(support + "/vault.gocryptfs/gocryptfs.conf").isFile());
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

        // Locked, the vault has no place for an item: it stays where it is.
        m_vault->lock();
        QCOMPARE(errorOf([&] { m_vault->addItem(url(home("Notes.txt"))); }), "Vault not mounted.");
        QCOMPARE(readFile(home("Notes.txt")), "a second one");
    }

    // A damaged registry counts as empty, and the next change rewrites it, private, with
    // what it knew.
    void registryReadRule() {
        const QList<std::pair<QByteArray, QStringList>> cases{
            {"not json", {"new.txt"}},
            {R"({"a":"/x/a","b":2})", {"new.txt"}},
            {R"({"Photo.JPG":"/p/Photo.JPG","photo.jpg":"/q/photo.jpg"})", {"Photo.JPG", "new.txt", "photo.jpg"}},
            {R"({"a.txt":"\/home\/u\/a.txt"})", {"a.txt", "new.txt"}}};
        for (const auto& [file, names] : cases) {
            QVERIFY(writeFile(inVault(".morvanta-origins.json"), file));
            QVERIFY(writeFile(home("new.txt"), "n"));
            m_vault->addItem(url(home("new.txt")));
            QCOMPARE(registry().keys(), names);
            QVERIFY(QFile::remove(inVault("new.txt")));
        }
        QCOMPARE(m_vault->restoreFolder(url(inVault("a.txt"))), "/home/u");
        QCOMPARE(QFileInfo(inVault(".morvanta-origins.json")).permissions() & 0x0077, QFileDevice::Permissions());
    }
};

QTEST_GUILESS_MAIN(TestContents)
#include "tst_contents.moc"
