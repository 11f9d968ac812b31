// morvanta-hdiutil: its reading of argument lists, passwords and the mount table, and what
// it does with gocryptfs on FUSE.

#include "platform/Process.h"
#include "platform/hdiutil/Backup.h"
#include "platform/hdiutil/Mounts.h"
#include "platform/hdiutil/Password.h"
#include "platform/hdiutil/ToolCommand.h"
#include "support/FuseHarness.h"
#include "support/RecordingRunner.h"
#include "support/Trees.h"

#include "engine/HDIUtil.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace hdiutil;

namespace {

std::vector<std::string> toStd(const QStringList& list) {
    std::vector<std::string> out;
    std::transform(list.begin(), list.end(), std::back_inserter(out),
                   [](const QString& s) { return s.toStdString(); });
    return out;
}

// Runs the tool (the cheap-key build unless told otherwise) with raw standard-input bytes.
platform::ProcessResult tool(const QStringList& args, std::optional<std::string_view> input = {},
                             const QString& program = testsupport::fastToolPath()) {
    return platform::runProcess(program.toStdString(), toStd(args), input);
}

QString attachedAt(const platform::ProcessResult& run) {
    return parseMountPoint(QString::fromStdString(run.out)).value_or(QString());
}

QString mountInfoLine(const QString& mountPoint) {
    QFile info("/proc/self/mountinfo");
    info.open(QIODevice::ReadOnly);
    for (const QByteArray& line : info.readAll().split('\n')) {
        if (line.contains(' ' + QFile::encodeName(mountPoint) + ' '))
            return QString::fromUtf8(line);
    }
    return {};
}

// A literal's bytes, NULs included, without the one that ends it.
template <std::size_t N> QByteArray bytes(const char (&text)[N]) {
    return QByteArray(text, N - 1);
}

mode_t modeOf(const QString& path) {
    struct stat info {};
    return ::stat(QFile::encodeName(path), &info) == 0 ? info.st_mode & 07777 : 0;
}

std::optional<MountEntry> mountEntryAt(const QString& mountPoint) {
    return mountAt(currentMounts(), mountPoint.toStdString());
}

} // namespace

class TestHDIUtilTool : public QObject {
    Q_OBJECT

    std::unique_ptr<testsupport::ScopedRuntimeDir> m_runtime;
    std::unique_ptr<QTemporaryDir> m_dir;

    QString image(const QString& name = "vault.gocryptfs") const { return m_dir->filePath(name); }
    void startFuseTest() {
        m_runtime = std::make_unique<testsupport::ScopedRuntimeDir>();
        m_dir = std::make_unique<QTemporaryDir>();
    }

private slots:
    void cleanup() {
        m_dir.reset();
        m_runtime.reset();
    }

    // --- reading its input ---------------------------------------------------------------

    void refusesBadArgumentLists_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("reason");
        QTest::newRow("unknown verb") << QStringList{"resize", "/v"} << "unknown verb";
        QTest::newRow("password prompt") << QStringList{"attach", "/v"} << "-stdinpass";
        QTest::newRow("weaker cipher")
            << QStringList{"create", "-encryption", "AES-128", "-stdinpass", "/v"} << "AES-256";
        QTest::newRow("unknown option") << QStringList{"detach", "-quiet", "/m"} << "-quiet";
        QTest::newRow("two paths") << QStringList{"detach", "/a", "/b"} << "unexpected";
        QTest::newRow("half a re-key") << QStringList{"chpass", "-oldstdinpass", "/v"}
                                       << "-newstdinpass";
        QTest::newRow("format without source")
            << QStringList{"create", "-encryption", "AES-256", "-stdinpass", "-format", "UDZO",
                           "/b"}
            << "go together";
    }
    void refusesBadArgumentLists() {
        QFETCH(QStringList, args);
        QFETCH(QString, reason);
        ToolCommand command;
        std::string error;
        QVERIFY(!parseToolCommand(toStd(args), command, error));
        QVERIFY2(QString::fromStdString(error).contains(reason), error.c_str());
    }

    // Refused rather than cut to a password nobody typed.
    void checksPasswords() {
        QCOMPARE(Secret(" x\r").asLine().bytes(), " x\r\n");
        QVERIFY(passwordProblem(std::string(kMaxPasswordBytes, 'a')).empty());
        for (const std::string& bad : {std::string(), std::string("a\nb"), std::string("a\0b", 3),
                                      std::string(kMaxPasswordBytes + 1, 'a')})
            QVERIFY(!passwordProblem(bad).empty());
    }

    void readsSevenZipProgressInAnyChunks() {
        // As 7-Zip writes it, with a file name that holds a percent sign of its own.
        const std::string_view stream = "Enter password:\n  0%\b\b\b\b    \b\b\b\b 42% 3 + 99% off\b\b"
                                        "\b\b\b\b\b\b\b\b\b\b\b\b100%\b\b\b\b";
        for (const std::size_t cut : {1, 3, 100}) {
            SevenZipProgress progress;
            std::vector<int> seen;
            for (std::size_t at = 0; at < stream.size(); at += cut)
                progress.feed(stream.substr(at, cut), [&](int percent) { seen.push_back(percent); });
            QCOMPARE(seen, (std::vector<int>{0, 42, 100}));
        }
    }

    void readsTheMountTable() {
        const std::string text =
            "24 1 0:22 / /proc rw,nosuid - proc proc rw\n"
            "41 26 0:38 / /run/user/0/morvanta/My\\040Vault rw,nosuid,nodev shared:5 master:1 - "
            "fuse.gocryptfs morvanta:/home/a\\134b/vault.gocryptfs rw,user_id=0\n"
            "garbage line\n"
            "42 26 0:39 / /mnt/other rw - fuse.sshfs host:/x rw\n";
        const std::vector<MountEntry> mounts = parseMountInfo(text);
        QCOMPARE(mounts.size(), std::size_t(3));
        QCOMPARE(mounts[1].mountPoint, "/run/user/0/morvanta/My Vault");
        QCOMPARE(mounts[1].fsType, "fuse.gocryptfs");
        QCOMPARE(ownMounts(mounts).size(), std::size_t(1));
        QVERIFY(mountOfImage(mounts, "/home/a\\b/vault.gocryptfs"));
        QVERIFY(mountAt(mounts, "/run/user/0/morvanta/My Vault/"));
        QVERIFY(!mountAt(mounts, "/run/user/0/morvanta"));
    }

    void namesMountsAfterTheirImageUnambiguously() {
        for (const std::string path : {"/plain/vault.gocryptfs", "/with space,comma%25/v",
                                       "/ünï\ncode/\\back", "/a=b:c"}) {
            const std::string name = fsNameForImage(path);
            QVERIFY2(name.find_first_of(" ,\n\\=") == std::string::npos, name.c_str());
            QCOMPARE(imageForFsName(name), path);
        }
        QVERIFY(fsNameForImage("/a,b") != fsNameForImage("/a%2Cb"));
        QCOMPARE(imageForFsName("/not/ours"), std::nullopt);
        QCOMPARE(imageForFsName("morvanta:/cut%4"), std::nullopt);
    }

    // A folder left at the mount point's name is used only when empty, and only once it is
    // private again; anything else there is passed over, never mounted on.
    void mountsOnlyInPrivateEmptyFolders() {
        QTemporaryDir root;
        const std::string base = root.path().toStdString();
        QVERIFY(QDir().mkpath(root.filePath("MorvantaVault")));
        ::chmod(QFile::encodeName(root.filePath("MorvantaVault")), 0755);
        QCOMPARE(chooseMountPoint(base, "MorvantaVault"), base + "/MorvantaVault");
        QCOMPARE(modeOf(root.filePath("MorvantaVault")), mode_t(0700));

        QVERIFY(testsupport::writeFile(root.filePath("MorvantaVault/saved later.txt"), "plain"));
        QCOMPARE(chooseMountPoint(base, "MorvantaVault"), base + "/MorvantaVault 1");
        QCOMPARE(modeOf(root.filePath("MorvantaVault 1")), mode_t(0700));
    }

    // --- with gocryptfs on FUSE ----------------------------------------------------------

    void attachesPrivatelyAndAnswersWithAPropertyList() {
        REQUIRE_FUSE();
        startFuseTest();
        QCOMPARE(tool(RecordingRunner::createArgs(image()), "pw").status, 0);
        QCOMPARE(modeOf(image()), mode_t(0700));
        // A wrong password: one line of reason, and no mount or folder left behind.
        const auto wrong = tool({"attach", "-stdinpass", "-plist", image()}, "wrong");
        QCOMPARE(wrong.status, 1);
        QCOMPARE(wrong.err.substr(0, wrong.err.find('\n') + 1), wrong.err);
        QVERIFY2(QString::fromStdString(wrong.err).contains("Password incorrect"), wrong.err.c_str());
        QCOMPARE(QDir(m_runtime->path() + "/morvanta")
                     .entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
                 QStringList());

        const auto run = tool({"attach", "-stdinpass", "-plist", "-nobrowse", image()}, "pw");
        QCOMPARE(run.status, 0);
        const QString mount = attachedAt(run);
        QCOMPARE(mount, m_runtime->path() + "/morvanta/MorvantaVault");
        QCOMPARE(modeOf(m_runtime->path() + "/morvanta"), mode_t(0700));
        QCOMPARE(modeOf(mount), mode_t(0700));

        const auto entry = mountEntryAt(mount);
        QVERIFY(entry);
        QCOMPARE(entry->fsType, std::string(kFsType));
        QCOMPARE(imageForFsName(entry->source),
                 QFileInfo(image()).canonicalFilePath().toStdString());
        const QString options = mountInfoLine(mount);
        QVERIFY2(options.contains("nosuid") && options.contains("nodev"), qPrintable(options));
        QVERIFY2(!options.contains("allow_other"), qPrintable(options));

        // Attaching what is attached already is refused, whatever the password.
        const auto again = tool({"attach", "-stdinpass", "-plist", image()}, "pw");
        QCOMPARE(again.status, 1);
        QVERIFY2(QString::fromStdString(again.err).contains("already attached"), again.err.c_str());
        const auto reKey = tool({"chpass", "-oldstdinpass", "-newstdinpass", image()},
                                std::string_view("pw\0new\0", 8));
        QVERIFY2(reKey.err.find("attached") != std::string::npos, reKey.err.c_str());

        const auto info = tool({"info", "-plist"});
        QCOMPARE(parseAttachedMountPoints(QString::fromStdString(info.out), image()), QStringList{mount});
        // A second vault of the same volume name mounts apart.
        QCOMPARE(tool(RecordingRunner::createArgs(image("two.gocryptfs")), "pw").status, 0);
        const QString second =
            attachedAt(tool({"attach", "-stdinpass", "-plist", image("two.gocryptfs")}, "pw"));
        QCOMPARE(second, mount + " 1");

        for (const QString& mountPoint : {mount, second}) {
            QCOMPARE(tool({"detach", mountPoint}).status, 0);
            QVERIFY(!mountEntryAt(mountPoint));
            QVERIFY(!QFileInfo::exists(mountPoint));
        }
    }

    // gocryptfs run by hand on the vault is the user's business: never a second daemon on the
    // same vault, never an unmount of theirs.
    void leavesAloneAVaultGocryptfsServesElsewhere_data() {
        QTest::addColumn<QStringList>("gocryptfsArgs");
        QTest::addColumn<QString>("reason");
        QTest::newRow("mounted by hand")
            << QStringList{"-q", "VAULT", "manual"} << "already mounted by gocryptfs at";
        QTest::newRow("re-keyed by hand")
            << QStringList{"-passwd", "VAULT"} << "gocryptfs is already running on the vault";
    }
    void leavesAloneAVaultGocryptfsServesElsewhere() {
        REQUIRE_FUSE();
        startFuseTest();
        QFETCH(QStringList, gocryptfsArgs);
        QFETCH(QString, reason);
        QVERIFY(tool({"detach", m_dir->path()}).err.find("not attached") != std::string::npos);
        // A name of its own, so that its processes are told apart from any other test's.
        const QString vault = image(QFileInfo(m_dir->path()).fileName() + ".gocryptfs");
        QCOMPARE(tool(RecordingRunner::createArgs(vault), "pw").status, 0);
        QDir().mkpath(m_dir->filePath("manual"));
        // Started beside the vault, with relative paths, as a person would type them.
        QProcess byHand;
        const auto cleanUp = qScopeGuard([&] {
            platform::runProcess("/usr/bin/fusermount3",
                                 {"-u", m_dir->filePath("manual").toStdString()}, {});
            byHand.kill();
            byHand.waitForFinished();
        });
        byHand.setWorkingDirectory(m_dir->path());
        byHand.start("/usr/bin/gocryptfs",
                     gocryptfsArgs.replaceInStrings("VAULT", QFileInfo(vault).fileName()));
        QVERIFY(byHand.waitForStarted());
        if (gocryptfsArgs.contains("manual")) {
            byHand.write("pw\n");
            byHand.closeWriteChannel();
            QTRY_VERIFY(mountEntryAt(m_dir->filePath("manual")));
        }
        const QList<int> processes = testsupport::gocryptfsDaemonsServing(QFileInfo(vault).fileName());

        const auto run = tool({"attach", "-stdinpass", "-plist", vault}, "pw");
        QCOMPARE(run.status, 1);
        QVERIFY2(QString::fromStdString(run.err).contains(reason), run.err.c_str());
        QCOMPARE(testsupport::mountsBelow(m_runtime->path()), QStringList());
        QCOMPARE(testsupport::gocryptfsDaemonsServing(QFileInfo(vault).fileName()), processes);
        const auto detach = tool({"detach", "-force", m_dir->filePath("manual")});
        QVERIFY2(detach.status == 1 && !detach.err.empty(), detach.err.c_str());
        QCOMPARE(testsupport::gocryptfsDaemonsServing(QFileInfo(vault).fileName()), processes);
    }

    // The vault was made with "old"; afterwards exactly one of the two passwords opens it.
    void reKeysOnlyWithExactlyTwoPasswords_data() {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<QByteArray>("opens");
        QTest::newRow("wrong old")
            << bytes("nope\0new\0") << "Password incorrect" << QByteArray("old");
        // Each of these once re-keyed to a password nobody typed.
        QTest::newRow("NUL inside the old")
            << bytes("old\0x\0new\0") << "each ended" << QByteArray("old");
        QTest::newRow("a third field")
            << bytes("old\0new\0more\0") << "each ended" << QByteArray("old");
        QTest::newRow("no final NUL") << bytes("old\0new") << "each ended" << QByteArray("old");
        QTest::newRow("right") << bytes("old\0new\0") << QString() << QByteArray("new");
    }
    void reKeysOnlyWithExactlyTwoPasswords() {
        REQUIRE_FUSE();
        startFuseTest();
        QFETCH(QByteArray, input);
        QFETCH(QString, reason);
        QFETCH(QByteArray, opens);
        QCOMPARE(tool(RecordingRunner::createArgs(image()), "old").status, 0);
        // A re-key interrupted earlier leaves this behind; it must not block the next one.
        QVERIFY(QFile(image() + "/gocryptfs.conf.tmp").open(QIODevice::WriteOnly));

        const auto run =
            tool({"chpass", "-oldstdinpass", "-newstdinpass", image()}, input.toStdString());
        QCOMPARE(run.status, reason.isEmpty() ? 0 : 1);
        QVERIFY2(QString::fromStdString(run.err).contains(reason), run.err.c_str());
        for (const char* password : {"old", "new"}) {
            const auto attach = tool({"attach", "-stdinpass", "-plist", image()}, password);
            QCOMPARE(attach.status == 0, password == opens);
            if (attach.status == 0)
                QCOMPARE(tool({"detach", attachedAt(attach)}).status, 0);
        }
    }

    // A good backup exists; a copy that may not be made leaves it, and whatever is at the
    // destination, exactly as they were.
    void copiesOnlyAnAttachedVaultOverAFile_data() {
        QTest::addColumn<QStringList>("paths"); // what is copied, where to
        QTest::addColumn<QString>("reason");
        QTest::newRow("a plain folder") << QStringList{"plain", "backup.7z"} << "not an attached";
        QTest::newRow("without -ov") << QStringList{"mount", "backup.7z"} << "File exists";
        QTest::newRow("onto a link") << QStringList{"mount", "link"} << "symbolic link";
        QTest::newRow("onto a pipe") << QStringList{"mount", "pipe"} << "not a regular file";
    }
    void copiesOnlyAnAttachedVaultOverAFile() {
        REQUIRE_FUSE();
        startFuseTest();
        QFETCH(QStringList, paths);
        QFETCH(QString, reason);
        const QString destination = paths[1];
        QCOMPARE(tool(RecordingRunner::createArgs(image()), "pw").status, 0);
        const QString mount = attachedAt(tool({"attach", "-stdinpass", "-plist", image()}, "pw"));
        QFile(mount + "/a.txt").open(QIODevice::WriteOnly);
        auto copy = [&](const QString& from, const QString& to, bool ov) {
            QStringList args{"create",     "-encryption", "AES-256",          "-stdinpass",
                             "-srcfolder", from,          "-volname",         "MorvantaVault",
                             "-format",    "UDZO",        m_dir->filePath(to)};
            if (ov)
                args.insert(10, "-ov");
            return tool(args, "pw");
        };
        QCOMPARE(copy(mount, "backup.7z", true).status, 0);
        QCOMPARE(QFileInfo(m_dir->filePath("backup.7z")).permissions() & 0x0077,
                 QFileDevice::Permissions());
        const QByteArray good = testsupport::readFile(m_dir->filePath("backup.7z"));
        QDir().mkpath(m_dir->filePath("plain"));
        QVERIFY(QFile::link(m_dir->filePath("backup.7z"), m_dir->filePath("link")));
        QCOMPARE(::mkfifo(QFile::encodeName(m_dir->filePath("pipe")), 0600), 0);
        struct stat before {};
        struct stat after {};
        ::lstat(QFile::encodeName(m_dir->filePath(destination)), &before);

        const auto run = copy(paths[0] == "plain" ? m_dir->filePath("plain") : mount, destination,
                              reason != "File exists");
        QCOMPARE(run.status, 1);
        QVERIFY2(QString::fromStdString(run.err).contains(reason), run.err.c_str());
        QCOMPARE(testsupport::readFile(m_dir->filePath("backup.7z")), good);
        ::lstat(QFile::encodeName(m_dir->filePath(destination)), &after);
        QCOMPARE(after.st_mode, before.st_mode);
        QCOMPARE(QDir(m_dir->path()).entryList({"*.partial-*"}), QStringList());
        tool({"detach", mount});
    }
};

QTEST_GUILESS_MAIN(TestHDIUtilTool)
#include "tst_hdiutiltool.moc"
