// morvanta-hdiutil: its reading of argument lists, passwords and the mount table, and what
// it does with gocryptfs on FUSE.

#include "platform/Process.h"
#include "platform/hdiutil/Mounts.h"
#include "platform/hdiutil/Password.h"
#include "platform/hdiutil/ToolCommand.h"
#include "support/FuseHarness.h"

#include "engine/HDIUtil.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace hdiutil;

namespace {

std::vector<std::string> toStd(const QStringList& list) {
    std::vector<std::string> out;
    for (const QString& s : list)
        out.push_back(s.toStdString());
    return out;
}

// Runs the tool (the cheap-key build unless told otherwise) with raw standard-input bytes.
platform::ProcessResult tool(const QStringList& args, std::optional<std::string_view> input = {},
                             const QString& program = testsupport::fastToolPath()) {
    return platform::runProcess(program.toStdString(), toStd(args), input);
}

QStringList createArgs(const QString& image, const QString& volume = "MorvantaVault") {
    return {"create", "-encryption", "AES-256", "-stdinpass", "-size", "2t", "-type",
            "SPARSEBUNDLE", "-fs", "APFS", "-volname", volume, image};
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

    void parsesTheEnginesArgumentLists() {
        ToolCommand command;
        std::string error;
        QVERIFY(parseToolCommand(toStd(createArgs("/v/vault.gocryptfs")), command, error));
        QCOMPARE(command.verb, ToolCommand::Verb::Create);
        QCOMPARE(command.volumeName, "MorvantaVault");
        QCOMPARE(command.target, "/v/vault.gocryptfs");
        QVERIFY(command.stdinPass);

        QVERIFY(parseToolCommand({"attach", "-stdinpass", "-plist", "-nobrowse", "/v"}, command,
                                 error));
        QVERIFY(command.verb == ToolCommand::Verb::Attach && command.plist && command.stdinPass);

        QVERIFY(parseToolCommand({"detach", "-force", "/m p"}, command, error));
        QVERIFY(command.force && command.target == "/m p");
        QVERIFY(parseToolCommand({"detach", "/m"}, command, error));
        QVERIFY(!command.force);

        QVERIFY(parseToolCommand({"chpass", "-oldstdinpass", "-newstdinpass", "/v"}, command,
                                 error));
        QCOMPARE(command.verb, ToolCommand::Verb::ChangePassword);

        QVERIFY(parseToolCommand({"create", "-encryption", "AES-256", "-stdinpass", "-srcfolder",
                                  "/m", "-volname", "MorvantaVault", "-format", "UDZO", "-ov",
                                  "/b.7z"},
                                 command, error));
        QVERIFY(command.overwrite && command.sourceFolder == "/m" && command.format == "UDZO");
    }

    void refusesBadArgumentLists_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("reason");
        QTest::newRow("nothing") << QStringList{} << "no verb";
        QTest::newRow("unknown verb") << QStringList{"resize", "/v"} << "unknown verb";
        QTest::newRow("password prompt") << QStringList{"attach", "/v"} << "-stdinpass";
        QTest::newRow("weaker cipher")
            << QStringList{"create", "-encryption", "AES-128", "-stdinpass", "/v"} << "AES-256";
        QTest::newRow("unknown option") << QStringList{"detach", "-quiet", "/m"} << "-quiet";
        QTest::newRow("two paths") << QStringList{"detach", "/a", "/b"} << "unexpected";
        QTest::newRow("no path") << QStringList{"detach", "-force"} << "needs a path";
        QTest::newRow("value missing")
            << QStringList{"create", "-stdinpass", "-encryption"} << "needs a value";
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

    void splitsAndChecksPasswords() {
        const Secret reKey(std::string("old pw\0new pw\0", 14));
        const std::vector<Secret> both = splitPasswords(reKey, 2);
        QCOMPARE(both[0].bytes(), "old pw");
        QCOMPARE(both[1].bytes(), "new pw");
        QCOMPARE(splitPasswords(Secret("no terminator"), 1)[0].bytes(), "no terminator");
        QCOMPARE(splitPasswords(Secret("only one"), 2)[1].bytes(), "");
        QCOMPARE(Secret(" x\r").asLine().bytes(), " x\r\n");

        QVERIFY(passwordProblem(std::string(kMaxPasswordBytes, 'a')).empty());
        QVERIFY(passwordProblem(" \r\t spaces and CR are kept ").empty());
        QVERIFY(passwordProblem(std::string("\xC3\xA9", 2)).empty());
        QVERIFY(!passwordProblem("").empty());
        QVERIFY(!passwordProblem("two\nlines").empty());
        QVERIFY(!passwordProblem(std::string(kMaxPasswordBytes + 1, 'a')).empty());
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
        QCOMPARE(imageForFsName("morvanta:/bad%G1"), std::nullopt);
        QCOMPARE(imageForFsName("morvanta:/cut%4"), std::nullopt);
    }

    // --- with gocryptfs on FUSE ----------------------------------------------------------

    void refusesPasswordsGocryptfsWouldChange_data() {
        QTest::addColumn<QByteArray>("password");
        QTest::addColumn<QString>("reason");
        QTest::newRow("empty") << QByteArray() << "empty";
        QTest::newRow("line feed") << QByteArray("line\nfeed") << "line break";
        QTest::newRow("too long") << QByteArray(2049, 'x') << "longer than 2048";
    }
    void refusesPasswordsGocryptfsWouldChange() {
        REQUIRE_FUSE();
        startFuseTest();
        QFETCH(QByteArray, password);
        QFETCH(QString, reason);
        const auto run = tool(createArgs(image()), password.toStdString());
        QCOMPARE(run.status, 1);
        QVERIFY2(QString::fromStdString(run.err).contains(reason), run.err.c_str());
        QCOMPARE(std::count(run.err.begin(), run.err.end(), '\n'), 1);
        QVERIFY(!QFileInfo::exists(image()));
    }

    void attachesPrivatelyAndAnswersWithAPropertyList() {
        REQUIRE_FUSE();
        startFuseTest();
        QCOMPARE(tool(createArgs(image()), "pw").status, 0);
        QCOMPARE(modeOf(image()), mode_t(0700));

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

        const auto info = tool({"info", "-plist"});
        QCOMPARE(parseAttachedMountPoints(QString::fromStdString(info.out), image()),
                 QStringList{mount});

        QCOMPARE(tool({"detach", mount}).status, 0);
        QVERIFY(!mountEntryAt(mount));
        QVERIFY(!QFileInfo::exists(mount));
    }

    void namesASecondVaultsMountApart() {
        REQUIRE_FUSE();
        startFuseTest();
        for (const QString& name : QStringList{"one.gocryptfs", "two.gocryptfs"})
            QCOMPARE(tool(createArgs(image(name)), "pw").status, 0);
        const QString first = attachedAt(tool({"attach", "-stdinpass", "-plist", image("one.gocryptfs")}, "pw"));
        const QString second = attachedAt(tool({"attach", "-stdinpass", "-plist", image("two.gocryptfs")}, "pw"));
        QCOMPARE(QFileInfo(first).fileName(), "MorvantaVault");
        QCOMPARE(QFileInfo(second).fileName(), "MorvantaVault 1");
        QCOMPARE(tool({"detach", first}).status, 0);
        QCOMPARE(tool({"detach", second}).status, 0);
    }

    void aWrongPasswordLeavesNothingBehind() {
        REQUIRE_FUSE();
        startFuseTest();
        QCOMPARE(tool(createArgs(image()), "right").status, 0);
        const auto run = tool({"attach", "-stdinpass", "-plist", image()}, "wrong");
        QCOMPARE(run.status, 1);
        QVERIFY2(QString::fromStdString(run.err).contains("Password incorrect"), run.err.c_str());
        QCOMPARE(std::count(run.err.begin(), run.err.end(), '\n'), 1);
        QVERIFY(testsupport::mountsBelow(m_runtime->path()).isEmpty());
        QCOMPARE(QDir(m_runtime->path() + "/morvanta").entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
                 QStringList());
    }

    void detachesOnlyItsOwnMounts() {
        REQUIRE_FUSE();
        startFuseTest();
        QVERIFY(tool({"detach", m_dir->path()}).err.find("not attached") != std::string::npos);

        // A vault mounted with gocryptfs by hand is the user's business, not ours.
        QCOMPARE(tool(createArgs(image()), "pw").status, 0);
        const QString manual = m_dir->filePath("manual");
        QDir().mkpath(manual);
        QCOMPARE(platform::runProcess("/usr/bin/gocryptfs", {"-q", image().toStdString(),
                                                             manual.toStdString()},
                                      "pw\n", platform::OutputCapture::MemoryFiles)
                     .status,
                 0);
        const auto run = tool({"detach", "-force", manual});
        QCOMPARE(run.status, 1);
        QVERIFY2(run.err.find("not attached by this tool") != std::string::npos, run.err.c_str());
        QVERIFY(mountEntryAt(manual));
        platform::runProcess("/usr/bin/fusermount3", {"-u", manual.toStdString()}, std::nullopt);
    }

    void onlyAForcedDetachTakesABusyVault() {
        REQUIRE_FUSE();
        startFuseTest();
        QCOMPARE(tool(createArgs(image()), "pw").status, 0);
        const QString mount = attachedAt(tool({"attach", "-stdinpass", "-plist", image()}, "pw"));
        const int fd = ::open(QFile::encodeName(mount + "/held.txt"), O_RDWR | O_CREAT, 0600);
        QVERIFY(fd >= 0);
        QCOMPARE(::write(fd, "abc", 3), ssize_t(3));

        const auto plain = tool({"detach", mount});
        QCOMPARE(plain.status, 1);
        QVERIFY2(plain.err.find("busy") != std::string::npos, plain.err.c_str());
        QVERIFY(mountEntryAt(mount));

        QCOMPARE(tool({"detach", "-force", mount}).status, 0);
        QVERIFY(!mountEntryAt(mount));
        // Forced means the vault is closed even to the file that was open.
        char buffer[3];
        QVERIFY(::pread(fd, buffer, sizeof buffer, 0) < 0);
        ::close(fd);

        const QString reopened = attachedAt(tool({"attach", "-stdinpass", "-plist", image()}, "pw"));
        QFile held(reopened + "/held.txt");
        QVERIFY(held.open(QIODevice::ReadOnly));
        QCOMPARE(held.readAll(), QByteArray("abc"));
        held.close();
        QCOMPARE(tool({"detach", reopened}).status, 0);
    }

    void reKeysADetachedVaultOnly() {
        REQUIRE_FUSE();
        startFuseTest();
        QCOMPARE(tool(createArgs(image()), "old").status, 0);
        const QStringList chpass{"chpass", "-oldstdinpass", "-newstdinpass", image()};

        const auto wrong = tool(chpass, std::string_view("nope\0new\0", 9));
        QCOMPARE(wrong.status, 1);
        QVERIFY2(wrong.err.find("Password incorrect") != std::string::npos, wrong.err.c_str());
        const auto badNew = tool(chpass, std::string_view("old\0two\nlines\0", 15));
        QVERIFY2(badNew.err.find("new password: ") != std::string::npos, badNew.err.c_str());

        // A re-key interrupted earlier leaves this behind; it must not block the next one.
        QVERIFY(QFile(image() + "/gocryptfs.conf.tmp").open(QIODevice::WriteOnly));
        QCOMPARE(tool(chpass, std::string_view("old\0new\0", 8)).status, 0);

        const QString mount = attachedAt(tool({"attach", "-stdinpass", "-plist", image()}, "new"));
        QVERIFY(!mount.isEmpty());
        const auto whileAttached = tool(chpass, std::string_view("new\0old\0", 8));
        QVERIFY2(whileAttached.err.find("attached") != std::string::npos, whileAttached.err.c_str());
        QCOMPARE(tool({"detach", mount}).status, 0);
    }

    void writesCopiesOnlyWhereAllowed() {
        QTemporaryDir dir;
        const QString source = dir.filePath("source");
        QDir().mkpath(source + "/sub");
        QFile(source + "/sub/a.txt").open(QIODevice::WriteOnly);
        const QString target = dir.filePath("backup.7z");
        auto copy = [&](const QString& destination, bool overwrite) {
            QStringList args{"create", "-encryption", "AES-256", "-stdinpass", "-srcfolder", source,
                             "-volname", "MorvantaVault", "-format", "UDZO", destination};
            if (overwrite)
                args.insert(10, "-ov");
            return tool(args, "pw", testsupport::shippedToolPath());
        };

        QCOMPARE(copy(target, true).status, 0);
        QCOMPARE(QFileInfo(target).permissions() & 0x0077, QFileDevice::Permissions());
        const qint64 size = QFileInfo(target).size();

        const auto noOverwrite = copy(target, false);
        QVERIFY2(noOverwrite.err.find("File exists") != std::string::npos, noOverwrite.err.c_str());
        QCOMPARE(QFileInfo(target).size(), size);
        const auto intoFolder = copy(source, true);
        QVERIFY2(intoFolder.err.find("is a folder") != std::string::npos, intoFolder.err.c_str());
        const auto nowhere = copy(dir.filePath("missing/backup.7z"), true);
        QVERIFY2(nowhere.err.find("No such folder") != std::string::npos, nowhere.err.c_str());
        QCOMPARE(QDir(dir.path()).entryList({"*.partial-*"}), QStringList());
    }

    void theShippedToolUsesAStrongerKeyDerivation() {
        REQUIRE_FUSE();
        startFuseTest();
        QCOMPARE(tool(createArgs(image()), "pw", testsupport::shippedToolPath()).status, 0);
        QFile config(image() + "/gocryptfs.conf");
        QVERIFY(config.open(QIODevice::ReadOnly));
        const QJsonObject scrypt =
            QJsonDocument::fromJson(config.readAll()).object()["ScryptObject"].toObject();
        // gocryptfs's own default is 2^16.
        QCOMPARE(scrypt["N"].toInt(), 1 << 17);
    }
};

QTEST_GUILESS_MAIN(TestHDIUtilTool)
#include "tst_hdiutiltool.moc"
