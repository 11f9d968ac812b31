// The vault's contents on a real gocryptfs vault: what each operation leaves on disk, in the
// list and in the origins registry, and that every refusal leaves all of it unchanged. Moves
// tried as a hostile user would: what cannot be moved safely is refused with everything
// untouched; what changes during a move stays where it is; what goes in comes back out with
// every detail; and afterwards every byte is somewhere to be seen.

#include "platform/SystemCalls.h"
#include "platform/TreeRemoval.h"
#include "support/Errors.h"
#include "support/FileLayers.h"
#include "support/Trees.h"
#include "support/VaultTestCase.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <sys/fsuid.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace testsupport;

namespace {

// user::rw- user:1000:r-- group::r-- mask::r-- other::r--
const QByteArray kAcl = QByteArray::fromHex("0200000001000600ffffffff02000400e803000004000400ffffff"
                                            "ff10000400ffffffff20000400ffffffff");

// A tree with every detail a faithful copy keeps: attributes and an ACL, a hard link across
// folders, a link, a hole, a read-only folder; and a file too big for a 2 MiB file system.
bool makeTree(const QString& root) {
    const QByteArray a = QFile::encodeName(root + "/2024/a.jpg");
    QFile disk(root + "/disk.img");
    return QDir().mkpath(root + "/2024") && writeFile(root + "/2024/a.jpg", "holiday") &&
           ::setxattr(a, "user.xdg.tags", "tax,2024", 8, 0) == 0 &&
           ::setxattr(a, "system.posix_acl_access", kAcl.constData(), std::size_t(kAcl.size()), 0) == 0 &&
           writeFile(root + "/b.jpg", "b") &&
           ::link(QFile::encodeName(root + "/b.jpg"), QFile::encodeName(root + "/2024/b again.jpg")) == 0 &&
           QFile::link("b.jpg", root + "/link") && writeFile(root + "/film.bin", QByteArray(3 << 20, 'x')) &&
           disk.open(QIODevice::WriteOnly) && disk.resize(4 << 20) && disk.seek(1 << 20) &&
           disk.write(QByteArray(8192, 'd')) == 8192 &&
           ::chmod(QFile::encodeName(root + "/2024"), 0555) == 0;
}

} // namespace

class TestContents : public VaultTestCase {
    Q_OBJECT

    static QString helper() { return QCoreApplication::applicationDirPath() + "/morvanta-remove-original"; }
    static dev_t deviceOf(const QString& path) {
        struct stat info {};
        return ::stat(QFile::encodeName(path), &info) == 0 ? info.st_dev : 0;
    }

    // Where the registry on disk says each item came from.
    QJsonObject registry() const {
        return QJsonDocument::fromJson(readFile(inVault(".morvanta-origins.json"))).object();
    }

private slots:
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

    // Every way a move can meet trouble, on "Place/Photos" (the drive row: its drive). `left`
    // is what the item's place still holds afterwards, "*" for all of it untouched; the
    // destination then holds the whole item, or nothing at all when the move was refused.
    void everyByteEndsUpSomewhere_data() {
        QTest::addColumn<QString>("move");
        QTest::addColumn<QString>("plant");
        QTest::addColumn<QString>("error");
        QTest::addColumn<QStringList>("left");
        const QStringList all{"*"}, none;
        QTest::newRow("in with every detail") << "add" << "" << "<no error>" << none;
        QTest::newRow("and back out") << "restore" << "" << "<no error>" << none;
        QTest::newRow("out to a chosen folder") << "move out" << "" << "<no error>" << none;
        QTest::newRow("a drive inside") << "add" << "drive" << "“usb” inside" << all;
        QTest::newRow("a bind mount inside") << "add" << "bind" << "“usb” inside" << all;
        QTest::newRow("the item is a drive") << "add" << "the item is a drive" << "“usb” is a" << all;
        QTest::newRow("an immutable file") << "add" << "immutable" << "“2024/a.jpg”" << all;
        QTest::newRow("a pipe") << "add" << "pipe" << "“pipe”" << all;
        QTest::newRow("the vault fills up") << "add" << "size=2m" << "No space left on device" << all;
        QTest::newRow("no space for the registry") << "add" << "size=8m registry" << "No space left" << all;
        QTest::newRow("no inodes for the registry") << "add" << "size=64m,nr_inodes=64 registry" << "No space" << all;
        QTest::newRow("a write fails at close") << "add" << "close" << "Input/output error" << all;
        QTest::newRow("the original place fills up") << "restore" << "size=2m" << "No space left on device" << all;
        QTest::newRow("the chosen folder fills up") << "move out" << "size=2m" << "No space left on device" << all;
        QTest::newRow("read-only, prompt dismissed") << "add" << "read-only" << "original couldn’t be removed" << all;
        QTest::newRow("read-only, consent given") << "add" << "read-only, consent" << "<no error>" << none;
        QTest::newRow("files arrive and change mid-add")
            << "add" << "mid-move" << "Still there:" << QStringList{"2024", "2024/a.jpg", "2024/late.jpg", "early.jpg"};
        QTest::newRow("a file saved in the vault mid-restore")
            << "restore" << "mid-move" << "Still in the vault:" << QStringList{"saved.txt"};
    }
    void everyByteEndsUpSomewhere() {
        QFETCH(QString, move);
        QFETCH(QString, plant);
        QFETCH(QString, error);
        QFETCH(QStringList, left);
        if (::geteuid() != 0 && !plant.isEmpty() && plant != "mid-move")
            QSKIP("needs root to mount file systems and set file flags");
        const bool add = move == "add";
        const bool refused = left == QStringList{"*"};
        // Left part-way, the copy's folders have times of their own.
        const Detail detail = refused || left.isEmpty() ? Detail::Everything : Detail::Content;
        const QString usb = home("Place/Photos/usb");
        std::unique_ptr<ScopedTmpfs> tmpfs;
        const auto mountTmpfs = [&](const QString& at, const QByteArray& options) {
            tmpfs = std::make_unique<ScopedTmpfs>(home(at), options);
            return tmpfs->mounted();
        };
        const auto undo = qScopeGuard([&] {
            platform::sys::close = ::close;
            QProcess::execute("chattr", {"-f", "-i", home("Place/Photos/2024/a.jpg")});
            ::umount2(QFile::encodeName(usb), MNT_DETACH);
            if (m_vault->isUnlocked()) // before its file system goes
                m_vault->lock();
        });
        if (add && plant.startsWith("size=")) {
            m_vault->lock();
            QVERIFY(mountTmpfs("small", plant.section(' ', 0, 0).toUtf8()));
            openVault(home("small/support"));
        }
        if (plant.startsWith("read-only")) // nothing can be removed from it, even by root
            QVERIFY(mountTmpfs("Place", "size=16m"));
        QVERIFY(makeTree(home("Place/Photos")));
        const bool bind = plant == "bind";
        if (bind || plant.contains("drive"))
            QVERIFY(QDir().mkpath(usb) && QDir().mkpath(home("elsewhere")) &&
                    ::mount(bind ? QFile::encodeName(home("elsewhere")).constData() : "none", QFile::encodeName(usb),
                            bind ? nullptr : "tmpfs", bind ? MS_BIND : 0, nullptr) == 0);
        if (plant == "pipe")
            QVERIFY(::mkfifo(QFile::encodeName(home("Place/Photos/pipe")), 0600) == 0);
        if (plant == "immutable")
            QCOMPARE(QProcess::execute("chattr", {"+i", home("Place/Photos/2024/a.jpg")}), 0);
        QString source = plant == "the item is a drive" ? usb : home("Place/Photos");
        QString destination = inVault(QFileInfo(source).fileName());
        const auto before = treeOf(source, detail);
        if (!add) {
            m_vault->addItem(url(source));
            QCOMPARE(treeOf(inVault("Photos"), detail), before);
            std::swap(source, destination);
            if (plant.startsWith("size="))
                QVERIFY(mountTmpfs("Place", plant.toUtf8()));
        }

        auto files = std::make_shared<RecordingFileLayer>();
        files->beforeEach = [&](const QString& call) {
            if (plant == "mid-move" && add && call.startsWith("copy ")) // after the survey
                writeFile(source + "/early.jpg", "early");
            if (plant == "mid-move" && call == "remove " + source) { // after the copy: new files, one changed
                for (const QString& name : left)
                    writeFile(source + '/' + name, "saved meanwhile");
            }
            if (plant.endsWith("registry") && call == "flush " + destination) { // named, not yet recorded
                fillUp(home("small"));
                for (int i = 0; plant.contains("nr_inodes") && writeFile(home("small/%1").arg(i), {}); ++i) {
                }
            }
        };
        m_vault->setFileLayer(files);
        if (plant == "close")
            platform::sys::close = [](int fd) {
                const bool film = QFile::symLinkTarget(QString("/proc/self/fd/%1").arg(fd)).endsWith("film.bin");
                const int result = ::close(fd);
                if (film)
                    errno = EIO;
                return film ? -1 : result;
            };
        if (plant.startsWith("read-only"))
            QVERIFY(tmpfs->setReadOnly(true));
        if (plant == "read-only, consent")
            m_vault->setElevationRunner([&](const QStringList& command, const QByteArray& survey) {
                tmpfs->setReadOnly(false);
                QProcess helper;
                helper.start(command[1], command.mid(2));
                helper.write(survey);
                helper.closeWriteChannel();
                return helper.waitForFinished() ? helper.exitCode() : -1;
            });

        const QString message = errorOf([&] {
            if (add)
                m_vault->addItem(url(source));
            else if (move == "restore")
                m_vault->restoreItem(url(source));
            else
                m_vault->removeItem(url(source), url(home("Place")));
        });
        QVERIFY2(message.contains(error), qPrintable(message));
        QCOMPARE(QFileInfo::exists(source), !left.isEmpty());
        QCOMPARE(QFileInfo::exists(destination), !refused);
        QCOMPARE(treeOf(refused ? source : destination, detail), before);
        if (!refused)
            QCOMPARE(treeOf(source).keys(), left);
        for (const QString& name : left) {
            if (QFileInfo(source + '/' + name).isFile())
                QVERIFY2(message.contains(source + '/' + name), qPrintable(message));
        }
        // The vault lists all it holds, no staging copy is left anywhere, and the vault knows
        // the way back of exactly the item it holds whole.
        QStringList inside = QDir(inVault({})).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
        inside.removeAll(".morvanta-origins.json");
        QCOMPARE(inside, listedNames());
        const QString outside = add ? source : destination;
        QCOMPARE(QDir(QFileInfo(outside).path()).entryList(QDir::AllEntries | QDir::Hidden).filter("staging"),
                 QStringList());
        QCOMPARE(m_vault->restoreFolder(url(inVault(QFileInfo(outside).fileName()))),
                 add != refused ? std::optional(QFileInfo(outside).path()) : std::nullopt);
        QCOMPARE(m_elevations, (plant == "read-only" ? QList<QStringList>{{"/usr/bin/pkexec", helper(), source}}
                                                     : QList<QStringList>()));
    }

    void readOnlyFoldersCopyAndCleanUpWithoutRootsPowers() {
        if (::geteuid() != 0)
            QSKIP("needs root to act as another user");
        // A user's tree with a read-only folder in it, worked on as that user: a thread whose
        // file-system identity is not root loses root's right to ignore permissions.
        QDir().mkpath(home("mine/App/res"));
        QVERIFY(writeFile(home("mine/App/res/icon.png"), "png"));
        QVERIFY(::chmod(QFile::encodeName(home("mine/App/res")), 0555) == 0);
        QProcess::execute("chown", {"-R", "65534:65534", home("mine")});
        QVERIFY(::chmod(QFile::encodeName(home()), 0755) == 0);
        const std::string app = QFile::encodeName(home("mine/App")).toStdString();
        ::setfsgid(65534);
        ::setfsuid(65534);
        const auto back = qScopeGuard([] { ::setfsuid(0), ::setfsgid(0); });

        QVERIFY(!platform::canRemoveTree(app)); // so it goes to the administrator, whole
        // whose helper never removes a part of the system, whatever it is handed
        QCOMPARE(QProcess::execute(helper(), {"/usr/lib/morvanta-never-there"}), 2);
        platform::TreeSurvey survey;
        QVERIFY(!platform::surveyTree(app, survey));
        for (const char* copy : {"/copy", "/second copy"})
            QCOMPARE(platform::copySurveyed(app, home("mine").toStdString() + copy, survey), platform::FileError());
        // The clean-up after a refused add, and the removal after a move out, leave nothing.
        QCOMPARE(platform::removeTree(home("mine/copy").toStdString()), platform::FileError());
        QVERIFY(!platform::surveyTree(home("mine/second copy").toStdString(), survey));
        QCOMPARE(platform::removeSurveyed(home("mine/second copy").toStdString(), survey, true), platform::FileError());
        QCOMPARE(QDir(home("mine")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{"App"});
    }
};

QTEST_GUILESS_MAIN(TestContents)
#include "tst_contents.moc"
