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

#include <ranges>
#include <sys/stat.h>
#include <unistd.h>

using namespace hdiutil;
using namespace std::literals;

namespace {

std::vector<std::string> toStd(const QStringList& list) {
    const auto strings = list | std::views::transform(&QString::toStdString);
    return {strings.begin(), strings.end()};
}

// Runs the cheap-key build of the tool with raw standard-input bytes.
platform::ProcessResult tool(const QStringList& args, std::optional<std::string_view> input = {}) {
    return platform::runProcess(testsupport::fastToolPath().toStdString(), toStd(args), input);
}

QString attachedAt(const platform::ProcessResult& run) {
    return parseMountPoint(QString::fromStdString(run.out)).value_or(QString());
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

private slots:
    void init() {
        m_runtime = std::make_unique<testsupport::ScopedRuntimeDir>();
        m_dir = std::make_unique<QTemporaryDir>();
    }
    void cleanup() {
        m_dir.reset();
        m_runtime.reset();
    }

    // Each refused for its own reason, not for some other fault of the list.
    void refusesBadArgumentLists() {
        using Refusal = std::pair<QStringList, QString>;
        for (const auto& [args, reason] :
             {Refusal{{"resize", "/v"}, "unknown verb"}, Refusal{{"attach", "/v"}, "-stdinpass"},
              Refusal{{"create", "-encryption", "AES-128", "-stdinpass", "/v"}, "AES-256"},
              Refusal{{"detach", "-quiet", "/m"}, "-quiet"}, Refusal{{"detach", "/a", "/b"}, "unexpected"},
              Refusal{{"chpass", "-oldstdinpass", "/v"}, "-newstdinpass"},
              Refusal{{"create", "-encryption", "AES-256", "-stdinpass", "-format", "UDZO", "/b"}, "go together"}}) {
            ToolCommand command;
            std::string error;
            QVERIFY(!parseToolCommand(toStd(args), command, error));
            QVERIFY2(QString::fromStdString(error).contains(reason), error.c_str());
        }
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

    // Its own mounts are told apart by a source that names their image unambiguously,
    // whatever the image's path holds.
    void recognisesItsOwnMounts() {
        for (const std::string path : {"/plain/v", "/with space,comma%25/v", "/ünï\ncode/\\back", "/a=b:c"}) {
            const std::string name = fsNameForImage(path);
            QVERIFY2(name.find_first_of(" ,\n\\=") == std::string::npos, name.c_str());
            QCOMPARE(imageForFsName(name), path);
        }
        QCOMPARE(imageForFsName("morvanta:/cut%4"), std::nullopt);
        const std::vector<MountEntry> mounts = parseMountInfo(
            "41 26 0:38 / /run/user/0/morvanta/My\\040Vault rw - fuse.gocryptfs " + fsNameForImage("/v") +
            " rw\n42 26 0:39 / /mnt/by\\040hand rw - fuse.gocryptfs /v rw\n");
        QCOMPARE(ownMounts(mounts).size(), std::size_t(1));
        QCOMPARE(mountOfImage(mounts, "/v")->mountPoint, "/run/user/0/morvanta/My Vault");
    }

    // A folder left at the mount point's name is used only when empty, and only once it is
    // private again; anything else there is passed over, never mounted on.
    void mountsOnlyInPrivateEmptyFolders() {
        const std::string base = m_dir->path().toStdString();
        QVERIFY(QDir().mkpath(image("MorvantaVault")));
        ::chmod(QFile::encodeName(image("MorvantaVault")), 0755);
        QCOMPARE(chooseMountPoint(base, "MorvantaVault"), base + "/MorvantaVault");
        QCOMPARE(modeOf(image("MorvantaVault")), mode_t(0700));
        QVERIFY(testsupport::writeFile(image("MorvantaVault/saved later.txt"), "plain"));
        QCOMPARE(chooseMountPoint(base, "MorvantaVault"), base + "/MorvantaVault 1");
        QCOMPARE(modeOf(image("MorvantaVault 1")), mode_t(0700));
    }

    void attachesPrivatelyAndAnswersWithAPropertyList() {
        REQUIRE_FUSE();
        QCOMPARE(tool(RecordingRunner::createArgs(image()), "pw").status, 0);
        // A wrong password: one line of reason, and no mount or folder left behind.
        const auto wrong = tool({"attach", "-stdinpass", "-plist", image()}, "wrong");
        QVERIFY2(wrong.status == 1 && wrong.err.find("Password incorrect") != std::string::npos, wrong.err.c_str());
        QCOMPARE(wrong.err.substr(0, wrong.err.find('\n') + 1), wrong.err);
        QCOMPARE(QDir(m_runtime->path() + "/morvanta").entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
                 QStringList());

        const QString mount = attachedAt(tool({"attach", "-stdinpass", "-plist", "-nobrowse", image()}, "pw"));
        QCOMPARE(mount, m_runtime->path() + "/morvanta/MorvantaVault");
        QCOMPARE(modeOf(m_runtime->path() + "/morvanta"), mode_t(0700));
        QCOMPARE(modeOf(mount), mode_t(0700));
        const QString options =
            QString(testsupport::readFile("/proc/self/mountinfo")).split('\n').filter(' ' + mount + ' ').value(0);
        QVERIFY2(options.contains("nosuid,nodev") && !options.contains("allow_other"), qPrintable(options));

        // Attaching what is attached already is refused, whatever the password.
        const auto again = tool({"attach", "-stdinpass", "-plist", image()}, "pw");
        QVERIFY2(again.status == 1 && again.err.find("already attached") != std::string::npos, again.err.c_str());
        const auto reKey = [&](std::string_view input) {
            return tool({"chpass", "-oldstdinpass", "-newstdinpass", image()}, input);
        };
        const auto attached = reKey("pw\0new\0"sv);
        QVERIFY2(attached.status == 1 && attached.err.find("attached") != std::string::npos, attached.err.c_str());

        const auto info = tool({"info", "-plist"});
        QCOMPARE(parseAttachedMountPoints(QString::fromStdString(info.out), image()), QStringList{mount});
        // Attached for this process, which runs: not a mount whose app has gone.
        QCOMPARE(parseStaleMountPoints(QString::fromStdString(info.out), image()), QStringList());
        // A second vault of the same volume name mounts apart.
        QCOMPARE(tool(RecordingRunner::createArgs(image("two.gocryptfs")), "pw").status, 0);
        const QString second = attachedAt(tool({"attach", "-stdinpass", "-plist", image("two.gocryptfs")}, "pw"));
        QCOMPARE(second, mount + " 1");

        for (const QString& mountPoint : {mount, second}) {
            QCOMPARE(tool({"detach", mountPoint}).status, 0);
            QVERIFY(!mountEntryAt(mountPoint));
            QVERIFY(!QFileInfo::exists(mountPoint));
        }

        // Re-keyed only with the right old password and exactly two NUL-ended passwords (each
        // of these once re-keyed to a password nobody typed), past what an interrupted re-key
        // left behind; then only the new password opens it.
        QVERIFY(QFile(image() + "/gocryptfs.conf.tmp").open(QIODevice::WriteOnly));
        for (const std::string_view refused : {"nope\0new\0"sv, "pw\0x\0new\0"sv, "pw\0new\0more\0"sv, "pw\0new"sv})
            QCOMPARE(reKey(refused).status, 1);
        QCOMPARE(reKey("pw\0new\0"sv).status, 0);
        QCOMPARE(tool({"attach", "-stdinpass", "-plist", image()}, "pw").status, 1);
        QCOMPARE(tool({"detach", attachedAt(tool({"attach", "-stdinpass", "-plist", image()}, "new"))}).status, 0);
    }

    // gocryptfs run by hand on the vault is the user's business: never a second daemon on the
    // same vault, never an unmount of theirs.
    void leavesAloneAVaultGocryptfsServesElsewhere_data() {
        QTest::addColumn<QStringList>("gocryptfsArgs");
        QTest::addColumn<QString>("reason");
        QTest::newRow("mounted by hand") << QStringList{"-q", "VAULT", "manual"} << "already mounted by gocryptfs at";
        QTest::newRow("re-keyed by hand") << QStringList{"-passwd", "VAULT"} << "gocryptfs is already running on";
    }
    void leavesAloneAVaultGocryptfsServesElsewhere() {
        REQUIRE_FUSE();
        QFETCH(QStringList, gocryptfsArgs);
        QFETCH(QString, reason);
        QVERIFY(tool({"detach", m_dir->path()}).err.find("not attached") != std::string::npos);
        // A name of its own, so that its processes are told apart from any other test's.
        const QString name = QFileInfo(m_dir->path()).fileName() + ".gocryptfs", manual = image("manual");
        QCOMPARE(tool(RecordingRunner::createArgs(image(name)), "pw").status, 0);
        QDir().mkpath(manual);
        // Started beside the vault, with relative paths, as a person would type them.
        QProcess byHand;
        const auto cleanUp = qScopeGuard([&] {
            platform::runProcess("/usr/bin/fusermount3", {"-u", manual.toStdString()}, {});
            byHand.kill();
            byHand.waitForFinished();
        });
        byHand.setWorkingDirectory(m_dir->path());
        byHand.start("/usr/bin/gocryptfs", gocryptfsArgs.replaceInStrings("VAULT", name));
        QVERIFY(byHand.waitForStarted());
        if (gocryptfsArgs.contains("manual")) {
            byHand.write("pw\n");
            byHand.closeWriteChannel();
            QTRY_VERIFY(mountEntryAt(manual));
        }
        const QList<int> processes = testsupport::gocryptfsDaemonsServing(name);

        const auto run = tool({"attach", "-stdinpass", "-plist", image(name)}, "pw");
        QVERIFY2(run.status == 1 && QString::fromStdString(run.err).contains(reason), run.err.c_str());
        QCOMPARE(testsupport::mountsBelow(m_runtime->path()), QStringList());
        QCOMPARE(tool({"detach", "-force", manual}).status, 1);
        QCOMPARE(testsupport::gocryptfsDaemonsServing(name), processes);
    }

    // A good backup exists; a copy that may not be made leaves it, and whatever is at the
    // destination, exactly as they were.
    void copiesOnlyAnAttachedVaultOverAFile() {
        REQUIRE_FUSE();
        QCOMPARE(tool(RecordingRunner::createArgs(image()), "pw").status, 0);
        const QString mount = attachedAt(tool({"attach", "-stdinpass", "-plist", image()}, "pw"));
        QFile(mount + "/a.txt").open(QIODevice::WriteOnly);
        const auto copy = [&](const QString& from, const QString& to, const QStringList& overwrite) {
            return tool(QStringList{"create", "-encryption", "AES-256", "-stdinpass", "-srcfolder", from,
                                    "-volname", "MorvantaVault", "-format", "UDZO"} + overwrite << image(to),
                        "pw");
        };
        QCOMPARE(copy(mount, "backup.7z", {"-ov"}).status, 0);
        QCOMPARE(QFileInfo(image("backup.7z")).permissions() & 0x0077, QFileDevice::Permissions());
        const QByteArray good = testsupport::readFile(image("backup.7z"));
        QDir().mkpath(image("plain"));
        QVERIFY(QFile::link(image("backup.7z"), image("link")));
        QCOMPARE(::mkfifo(QFile::encodeName(image("pipe")), 0600), 0);
        const auto kindOf = [&](const QString& name) {
            struct stat info {};
            return ::lstat(QFile::encodeName(image(name)), &info) == 0 ? info.st_mode : 0;
        };
        using Refusal = std::tuple<QString, QString, QStringList, QString>; // from, to, -ov, reason
        for (const auto& [from, to, overwrite, reason] :
             {Refusal{image("plain"), "backup.7z", {"-ov"}, "not an attached"},
              Refusal{mount, "backup.7z", {}, "File exists"}, Refusal{mount, "link", {"-ov"}, "symbolic link"},
              Refusal{mount, "pipe", {"-ov"}, "not a regular file"}}) {
            const mode_t before = kindOf(to);
            const auto run = copy(from, to, overwrite);
            QVERIFY2(run.status == 1 && QString::fromStdString(run.err).contains(reason), run.err.c_str());
            QCOMPARE(testsupport::readFile(image("backup.7z")), good);
            QCOMPARE(kindOf(to), before);
            QCOMPARE(QDir(m_dir->path()).entryList({"*.partial-*"}), QStringList());
        }
    }
};

QTEST_GUILESS_MAIN(TestHDIUtilTool)
#include "tst_hdiutiltool.moc"
