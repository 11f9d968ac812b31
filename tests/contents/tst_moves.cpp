// Moves on a real gocryptfs vault, tried as a hostile user would: what cannot be moved safely
// is refused with everything untouched; what changes during a move stays where it is; what
// goes in comes back out with every detail; and afterwards every byte is somewhere to be seen.

#include "engine/VaultManager.h"
#include "platform/TreeRemoval.h"
#include "support/Errors.h"
#include "support/FuseHarness.h"
#include "support/RecordingFileLayer.h"
#include "support/Trees.h"
#include "support/VaultTestCase.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/fsuid.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using testsupport::Detail;
using testsupport::errorOf;
using testsupport::readFile;
using testsupport::treeOf;
using testsupport::writeFile;

namespace {

bool setFileFlags(const QString& path, int flags) {
    const int fd = ::open(QFile::encodeName(path), O_RDONLY | O_NOFOLLOW);
    const bool done = fd >= 0 && ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
    if (fd >= 0)
        ::close(fd);
    return done;
}

// user::rw- user:1000:r-- group::r-- mask::r-- other::r--
const QByteArray kAcl = QByteArray::fromHex("0200000001000600ffffffff02000400e803000004000400ffffff"
                                            "ff10000400ffffffff20000400ffffffff");

} // namespace

class TestMoves : public VaultTestCase {
    Q_OBJECT

    // Everything at the vault's root but the registry, staging leftovers included.
    QStringList vaultEntries() const {
        QStringList names = QDir(inVault({})).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
        names.removeAll(".morvanta-origins.json");
        return names;
    }
    void requireRoot() {
        if (::geteuid() != 0)
            QSKIP("needs root to mount file systems and set file flags");
    }
private slots:
    void init() {
        REQUIRE_FUSE();
        setUpVault();
    }
    void cleanup() { tearDownVault(); }

    void whatCannotMoveSafelyIsRefusedUntouched_data() {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("problem");
        QTest::addColumn<QString>("error");
        QTest::newRow("a drive inside") << "Photos" << "tmpfs" << "“usb” inside";
        QTest::newRow("a bind mount inside") << "Photos" << "bind" << "“usb” inside";
        QTest::newRow("the item is a drive") << "Photos/usb" << "tmpfs" << "“usb” is a";
        QTest::newRow("an immutable file") << "Photos" << "immutable" << "“2024/a.jpg”";
        QTest::newRow("a pipe") << "Photos" << "pipe" << "“pipe”";
    }
    void whatCannotMoveSafelyIsRefusedUntouched() {
        requireRoot();
        QFETCH(QString, item);
        QFETCH(QString, problem);
        QFETCH(QString, error);
        QDir().mkpath(home("Photos/2024"));
        QVERIFY(writeFile(home("Photos/2024/a.jpg"), "holiday"));
        QDir().mkpath(home("elsewhere"));
        std::unique_ptr<testsupport::ScopedTmpfs> drive;
        if (problem == "tmpfs") {
            drive = std::make_unique<testsupport::ScopedTmpfs>(home("Photos/usb"));
            QVERIFY(drive->mounted());
        } else if (problem == "bind") {
            QDir().mkpath(home("Photos/usb"));
            QVERIFY(::mount(QFile::encodeName(home("elsewhere")), QFile::encodeName(home("Photos/usb")), nullptr, MS_BIND, nullptr) == 0);
        } else if (problem == "pipe") {
            QVERIFY(::mkfifo(QFile::encodeName(home("Photos/pipe")), 0600) == 0);
        } else {
            QVERIFY(setFileFlags(home("Photos/2024/a.jpg"), FS_IMMUTABLE_FL));
        }
        const auto undo = qScopeGuard([&] {
            setFileFlags(home("Photos/2024/a.jpg"), 0);
            if (problem == "bind")
                ::umount2(QFile::encodeName(home("Photos/usb")), MNT_DETACH);
        });
        const auto before = treeOf(home(), Detail::ModesAndTimes);

        const QString message = errorOf([&] { m_vault->addItem(url(home(item))); });
        QVERIFY2(message.contains(error), qPrintable(message));
        QCOMPARE(treeOf(home(), Detail::ModesAndTimes), before);
        QCOMPARE(vaultEntries(), QStringList());
        QCOMPARE(m_elevations.size(), 0);
    }

    // Nothing that holds the vault, nor the system, is ever moved; a link to them moves as a link.
    void protectedItemsAreNeverMoved() {
        QVERIFY(writeFile(inVault("inside.txt"), "x"));
        const QString support = home(".support");
        const auto before = treeOf(support);
        for (const QString& path : {support, support + "/vault.gocryptfs", home(), inVault("inside.txt"),
                                    inVault({}), m_runtime->path(), support + "/../.support/./vault.gocryptfs",
                                    QString("/"), QString("/usr/bin"), QString("/usr/../etc/passwd"),
                                    QDir::homePath()}) {
            const QString message = errorOf([&] { m_vault->addItem(url(path)); });
            QVERIFY2(message.contains("protected system item"), qPrintable(path + ": " + message));
        }
        QCOMPARE(treeOf(support), before);
        QCOMPARE(vaultEntries(), QStringList{"inside.txt"});
        QVERIFY(QFile::link(support, home("shortcut")));
        m_vault->addItem(url(home("shortcut")));
        QVERIFY(QFileInfo(inVault("shortcut")).isSymLink());
        QVERIFY(QFileInfo(support + "/vault.gocryptfs/gocryptfs.conf").isFile());

        // Nor by the administrator's helper, whatever it is handed.
        QProcess helper;
        helper.start(QCoreApplication::applicationDirPath() + "/morvanta-remove-original",
                     {"/usr/lib/morvanta-never-there"});
        helper.closeWriteChannel();
        QVERIFY(helper.waitForFinished());
        QCOMPARE(helper.exitCode(), 2);
    }

    void whatChangesDuringAMoveStaysWhereItIs() {
        QDir().mkpath(home("Photos/sub"));
        for (const QString name : {"a.jpg", "b.jpg", "sub/c.jpg"})
            QVERIFY(writeFile(home("Photos/" + name), name.toUtf8()));
        auto files = std::make_shared<RecordingFileLayer>();
        files->beforeEach = [&](const QString& call) {
            if (call.startsWith("copy ")) // arrives after the survey
                writeFile(home("Photos/early.jpg"), "early");
            if (call == "remove " + home("Photos")) { // arrives, and changes, after the copy
                writeFile(home("Photos/sub/late.jpg"), "late");
                writeFile(home("Photos/b.jpg"), "b.jpg, edited");
            }
        };
        m_vault->setFileLayer(files);

        const QString message = errorOf([&] { m_vault->addItem(url(home("Photos"))); });
        for (const QString left : {"b.jpg", "early.jpg", "sub/late.jpg"})
            QVERIFY2(message.contains(home("Photos/" + left)), qPrintable(message));
        // The vault has what was copied and knows where it came from; the rest is where it was.
        QCOMPARE(treeOf(inVault("Photos")).keys(), (QStringList{"a.jpg", "b.jpg", "sub", "sub/c.jpg"}));
        QCOMPARE(readFile(inVault("Photos/b.jpg")), "b.jpg");
        QCOMPARE(treeOf(home("Photos")).keys(), (QStringList{"b.jpg", "early.jpg", "sub", "sub/late.jpg"}));
        QCOMPARE(readFile(home("Photos/b.jpg")), "b.jpg, edited");
        QCOMPARE(m_vault->restoreFolder(url(inVault("Photos"))), home());
        QCOMPARE(m_elevations.size(), 0);

        // A lone file saved again while it was copied: the add is undone, the newer file stays.
        QVERIFY(writeFile(home("draft.txt"), "first"));
        files->beforeEach = [&](const QString& call) {
            if (call == "remove " + home("draft.txt"))
                writeFile(home("draft.txt"), "second, longer");
        };
        QVERIFY(testsupport::thrownBy([&] { m_vault->addItem(url(home("draft.txt"))); }));
        QCOMPARE(readFile(home("draft.txt")), "second, longer");
        QVERIFY(!m_vault->restoreFolder(url(inVault("draft.txt"))));
        QCOMPARE(vaultEntries(), QStringList{"Photos"});

        // The same on the way out: what was saved into the vault meanwhile stays in it.
        QVERIFY(QDir(home("Photos")).removeRecursively());
        files->beforeEach = [&](const QString& call) {
            if (call == "remove " + inVault("Photos"))
                writeFile(inVault("Photos/saved meanwhile.txt"), "new");
        };
        const QString out = errorOf([&] { m_vault->restoreItem(url(inVault("Photos"))); });
        QVERIFY2(out.contains("Still in the vault:\n" + inVault("Photos/saved meanwhile.txt")), qPrintable(out));
        QCOMPARE(treeOf(home("Photos")).keys(), (QStringList{"a.jpg", "b.jpg", "sub", "sub/c.jpg"}));
        QCOMPARE(treeOf(inVault("Photos")).keys(), QStringList{"saved meanwhile.txt"});
    }

    void aRegistryThatCannotBeWrittenFailsTheAdd_data() {
        QTest::addColumn<QByteArray>("options");
        QTest::newRow("no space") << QByteArray("size=8m");
        QTest::newRow("no inodes") << QByteArray("size=64m,nr_inodes=64");
    }
    void aRegistryThatCannotBeWrittenFailsTheAdd() {
        requireRoot();
        QFETCH(QByteArray, options);
        m_vault->lock();
        testsupport::ScopedTmpfs small(home("small"), options);
        QVERIFY(small.mounted());
        openVault(home("small/support"));
        QVERIFY(writeFile(home("Letter.txt"), "dear"));
        auto files = std::make_shared<RecordingFileLayer>();
        files->afterEach = [&](const QString& call) {
            if (call.startsWith("rename ")) {
                testsupport::fillUp(home("small"));
                for (int i = 0; options.contains("nr_inodes") && writeFile(home("small/%1").arg(i), {}); ++i) {
                }
            }
        };
        m_vault->setFileLayer(files);

        QVERIFY(errorOf([&] { m_vault->addItem(url(home("Letter.txt"))); }).contains("No space left"));
        QCOMPARE(readFile(home("Letter.txt")), "dear");
        QCOMPARE(vaultEntries(), QStringList());
    }

    void everyDetailGoesInAndComesBack() {
        QDir().mkpath(home("Tree/locked"));
        QVERIFY(writeFile(home("Tree/tagged.txt"), "tags"));
        QVERIFY(::setxattr(QFile::encodeName(home("Tree/tagged.txt")), "user.xdg.tags", "tax,2024", 8, 0) == 0);
        QVERIFY(::setxattr(QFile::encodeName(home("Tree/tagged.txt")), "system.posix_acl_access", kAcl.constData(),
                           std::size_t(kAcl.size()), 0) == 0);
        QVERIFY(writeFile(home("Tree/one name.txt"), "linked"));
        QVERIFY(::link(QFile::encodeName(home("Tree/one name.txt")), QFile::encodeName(home("Tree/locked/other name.txt"))) == 0);
        QVERIFY(QFile::link("tagged.txt", home("Tree/shortcut")));
        {
            QFile disk(home("Tree/disk.img")); // 256 MiB, nearly all of it a hole
            QVERIFY(disk.open(QIODevice::WriteOnly) && disk.resize(256 << 20) && disk.seek(100 << 20));
            QVERIFY(disk.write(QByteArray(8192, 'd')) == 8192);
        }
        QVERIFY(::chmod(QFile::encodeName(home("Tree/locked")), 0555) == 0);
        const auto before = treeOf(home("Tree"), Detail::Everything);
        QVERIFY(before.value("disk.img").contains("sparse"));

        m_vault->addItem(url(home("Tree")));
        QCOMPARE(treeOf(inVault("Tree"), Detail::Everything), before);
        QProcess du;
        du.start("du", {"-s", "-B1", m_vault->bundlePath()});
        QVERIFY(du.waitForFinished());
        QVERIFY2(du.readAllStandardOutput().split('\t').first().toLongLong() < 16 << 20, "the hole was filled in");

        m_vault->restoreItem(url(inVault("Tree")));
        QCOMPARE(treeOf(home("Tree"), Detail::Everything), before);
        QCOMPARE(vaultEntries(), QStringList());
    }

    void readOnlyFoldersCopyAndCleanUpWithoutRootsPowers() {
        requireRoot();
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

    void addingLeavesNoTraceOfTheOriginalAndFollowsNoPlantedLink() {
        QTemporaryDir desktop;
        qputenv("XDG_DATA_HOME", QFile::encodeName(desktop.path()));
        const auto restore = qScopeGuard([] { qunsetenv("XDG_DATA_HOME"); });
        const QByteArray href = url(home("Taxes.pdf")).toEncoded();
        QVERIFY(writeFile(desktop.filePath("recently-used.xbel"),
                          "<?xml version=\"1.0\"?>\n<xbel version=\"1.0\"><bookmark href=\"" + href +
                              "\" added=\"2026-01-01T00:00:00Z\"><info/></bookmark></xbel>"));
        QVERIFY(writeFile(home("victim"), "keep"));
        QVERIFY(QFile::link(home("victim"), inVault(".morvanta-origins.json.partial")));
        QVERIFY(writeFile(home("Taxes.pdf"), "%PDF"));
        QVERIFY(writeFile(home("Old.txt"), "old"));
        m_vault->addItem(url(home("Old.txt")));
        // The registry is replaced whole, never rewritten in place: one opened before the add
        // still reads as it was.
        QFile before(inVault(".morvanta-origins.json"));
        QVERIFY(before.open(QIODevice::ReadOnly));

        m_vault->addItem(url(home("Taxes.pdf")));
        QVERIFY(!readFile(desktop.filePath("recently-used.xbel")).contains(href));
        QCOMPARE(readFile(home("victim")), "keep");
        const QByteArray registryBefore = before.readAll();
        QVERIFY(registryBefore.contains("Old.txt") && !registryBefore.contains("Taxes.pdf"));
        QCOMPARE(m_vault->restoreFolder(url(inVault("Taxes.pdf"))), home());
    }
};

QTEST_GUILESS_MAIN(TestMoves)
#include "tst_moves.moc"
