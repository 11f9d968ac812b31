// The engine against a recording runner: the exact argument lists and standard input it
// gives the disk-image tool, and the state it publishes after every answer; and how it runs
// the tool and reads what the tool says.

#include "engine/VaultManager.h"
#include "support/Errors.h"
#include "support/RecordingRunner.h"
#include "support/Trees.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

Q_DECLARE_METATYPE(HDIUtilResult)
Q_DECLARE_METATYPE(std::optional<VaultError::Case>)

namespace {

using Call = RecordingRunner::Call;
using Case = VaultError::Case;
using Error = std::optional<Case>;
using Replies = QList<HDIUtilResult>;
using namespace testsupport;

const QString kMount = QStringLiteral("/run/user/1000/morvanta/MorvantaVault");
const HDIUtilResult kOk{0, {}, {}};
const HDIUtilResult kBusy{1, {}, "Device or resource busy"};

QStringList attachArgs(const QString& image) { return {"attach", "-stdinpass", "-plist", "-nobrowse", image}; }

bool idleLockPending(const VaultManager& vault) { return !vault.idleLockDeadline().isForever(); }

// What the screens see: unlocked, and where.
QString published(const VaultManager& vault) {
    return vault.isUnlocked() ? "open at " + vault.mountPoint().toLocalFile() : "locked";
}

Error kindOf(const std::function<void()>& operation) {
    const auto error = thrownBy(operation);
    return error ? Error(error->kind()) : std::nullopt;
}

// Runs a shell script as if it were the disk-image tool.
HDIUtilResult runScript(const QString& script, const std::optional<QString>& stdinText,
                        const QStringList& extraArgs = {}) {
    return runHDIUtilProgram(QStringLiteral("/bin/sh"),
                             QStringList{"-c", script, "tool"} + extraArgs, stdinText);
}

// What the disk-image tool prints on macOS, with a blank mount point added.
const char* kAttachXml =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict><key>system-entities</key><array>\n"
    "<dict><key>dev-entry</key><string>/dev/disk4</string></dict><dict><key>mount-point</key><string></string></dict>\n"
    "<dict><key>mount-point</key><string>/Volumes/MorvantaVault \u00FCn\u00EF</string></dict>\n"
    "<dict><key>mount-point</key><string>/Volumes/Second</string></dict></array></dict></plist>\n";

} // namespace

class TestVaultManager : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    RecordingRunner m_tool;

    QString supportDir() const { return m_dir.filePath("support"); }
    QString image() const { return supportDir() + "/vault.gocryptfs"; }
    std::unique_ptr<VaultManager> makeVault(bool withImage) {
        if (withImage)
            QDir().mkpath(image());
        auto vault = std::make_unique<VaultManager>(supportDir(), m_tool.runner());
        m_tool.calls.clear();
        return vault;
    }
    std::unique_ptr<VaultManager> makeUnlockedVault(const QString& password = "pw") {
        auto vault = makeVault(true);
        m_tool.replies = {RecordingRunner::attached(kMount)};
        vault->unlock(password);
        m_tool.calls.clear();
        return vault;
    }

private slots:
    void init() {
        m_tool = RecordingRunner{};
        QDir(supportDir()).removeRecursively();
    }

    // Of the image's mounts only those whose app is gone or unknown are detached, with the
    // desktop's memory of them: never another image's, never a running first instance's.
    void startingDetachesOnlyMountsLeftByAnAppThatIsGone() {
        QDir().mkpath(image());
        const auto entry = [](const QString& path, const QString& mount, const QString& alive) {
            return "<dict><key>image-path</key><string>" + path + "</string>" +
                   (alive.isEmpty() ? "" : "<key>owner-alive</key><" + alive + "/>") +
                   "<key>system-entities</key><array><dict><key>mount-point</key><string>" + mount +
                   "</string></dict></array></dict>";
        };
        m_tool.replies = {{0,
                           "<plist><dict><key>images</key><array>" +
                               entry("/elsewhere/vault.gocryptfs", "/run/o", {}) +
                               entry(image(), "/run/live", "true") +
                               entry(supportDir() + "/./vault.gocryptfs", "/run/crashed", "false") +
                               entry(image(), "/run/unknown", {}) + "</array></dict></plist>",
                           {}}};
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_dir.path()));
        QVERIFY(writeFile(m_dir.filePath("recently-used.xbel"),
                          "<xbel version=\"1.0\"><bookmark href=\"file:///run/live/a\"/>"
                          "<bookmark href=\"file:///run/crashed/b\"/></xbel>"));
        VaultManager(supportDir(), m_tool.runner()).detachStaleMounts();
        qunsetenv("XDG_DATA_HOME");
        const QByteArray recent = readFile(m_dir.filePath("recently-used.xbel"));
        QVERIFY2(recent.contains("/run/live/a") && !recent.contains("crashed"), recent.constData());
        QCOMPARE(m_tool.calls, (QList<Call>{{{"info", "-plist"}, std::nullopt},
                                            {{"detach", "-force", "/run/crashed"}, std::nullopt},
                                            {{"detach", "-force", "/run/unknown"}, std::nullopt}}));
    }

    // Created, then opened with the password on standard input and published once; an attach
    // that fails leaves the vault locked, with no automatic lock pending.
    void createThenUnlock_data() {
        QTest::addColumn<HDIUtilResult>("reply");
        QTest::addColumn<Error>("error");
        QTest::newRow("opened") << RecordingRunner::attached(kMount) << Error();
        QTest::newRow("refused") << HDIUtilResult{1, "", "Password incorrect.\n"} << Error(Case::mountFailed);
        QTest::newRow("no property list") << HDIUtilResult{0, "mounted!", ""} << Error(Case::mountFailed);
        QTest::newRow("no mount point") << RecordingRunner::attached("") << Error(Case::mountFailed);
    }
    void createThenUnlock() {
        QFETCH(HDIUtilResult, reply);
        QFETCH(Error, error);
        auto vault = makeVault(false);
        QSignalSpy unlockedSpy(vault.get(), &VaultManager::isUnlockedChanged);
        QSignalSpy mountSpy(vault.get(), &VaultManager::mountPointChanged);
        const QString password = QString::fromUtf8(" pässwörd ✓ ");
        vault->createVault(password);
        QCOMPARE(published(*vault), "locked");
        QDir().mkpath(image()); // as the tool would have
        m_tool.replies = {reply};
        if (!error)
            vault->setIdleTimeoutSeconds(0); // turns the automatic lock off
        QCOMPARE(kindOf([&] { vault->unlock(password); }), error);
        QVERIFY(!idleLockPending(*vault));
        QCOMPARE(m_tool.calls, (QList<Call>{{RecordingRunner::createArgs(image()), password},
                                            {attachArgs(image()), password}}));
        QCOMPARE(published(*vault), error ? QString("locked") : "open at " + kMount);
        QCOMPARE(unlockedSpy.count(), error ? 0 : 1);
        QCOMPARE(mountSpy.count(), error ? 0 : 1);
    }

    // The tool would cut or refuse these; each operation that takes a password refuses them
    // first, leaves everything as it was, and lets the borderline ones through.
    void unusablePasswordsNeverReachTheTool_data() {
        QTest::addColumn<QString>("password");
        QTest::addColumn<bool>("usable");
        QTest::newRow("empty") << QString() << false;
        QTest::newRow("NUL") << QString("ab").insert(1, QChar(0)) << false;
        QTest::newRow("line feed") << "a\nb" << false;
        QTest::newRow("2,049 bytes") << QString(1024, QChar(0xe9)) + "x" << false;
        QTest::newRow("2,048 bytes") << QString(1024, QChar(0xe9)) << true;
        QTest::newRow("carriage return") << "a\rb" << true;
    }
    void unusablePasswordsNeverReachTheTool() {
        QFETCH(QString, password);
        QFETCH(bool, usable);
        const auto refused = [&](const std::function<void()>& operation) {
            m_tool.calls.clear();
            return kindOf(operation) == Case::ioFailed && m_tool.calls.isEmpty();
        };
        auto vault = makeVault(true);
        QCOMPARE(refused([&] { vault->unlock(password); }), !usable);
        m_tool.replies = {RecordingRunner::attached(kMount)};
        vault->unlock("pw");
        QCOMPARE(refused([&] { vault->changePassword("pw", password); }), !usable);
        QCOMPARE(vault->isUnlocked(), !usable);
        QDir(image()).removeRecursively();
        QCOMPARE(refused([&] { vault->createVault(password); }), !usable);
    }

    // A busy vault is forced; one that cannot be detached even so is locked only if the
    // tool says it is no longer attached.
    void lockDetachesForcingOnlyWhenBusy_data() {
        QTest::addColumn<Replies>("replies");
        QTest::addColumn<int>("calls"); // of: detach, detach -force, info
        QTest::addColumn<Error>("error");
        const HDIUtilResult noImages{0, "<plist><dict><key>images</key><array/></dict></plist>", {}};
        QTest::newRow("detached") << Replies{} << 1 << Error();
        QTest::newRow("busy, forced") << Replies{kBusy} << 2 << Error();
        QTest::newRow("busy even forced") << Replies{kBusy, kBusy, {0, "?", {}}} << 3 << Error(Case::unmountFailed);
        QTest::newRow("unmounted from outside") << Replies{kBusy, kBusy, noImages} << 3 << Error();
    }
    void lockDetachesForcingOnlyWhenBusy() {
        QFETCH(Replies, replies);
        QFETCH(int, calls);
        QFETCH(Error, error);
        auto vault = makeUnlockedVault();
        m_tool.replies = replies;
        QCOMPARE(kindOf([&] { vault->lock(); }), error);
        const QList<QStringList> steps{{"detach", kMount}, {"detach", "-force", kMount}, {"info", "-plist"}};
        QCOMPARE(m_tool.argLists(), steps.first(calls));
        QCOMPARE(published(*vault), error ? "open at " + kMount : QString("locked"));
        if (error)
            return;
        QVERIFY(!idleLockPending(*vault));
        // A second lock finds nothing mounted and runs nothing.
        m_tool.calls.clear();
        QCOMPARE(kindOf([&] { vault->lock(); }), Case::notMounted);
        QVERIFY(m_tool.calls.isEmpty());
    }

    // Re-keyed: the image detached, re-keyed with both passwords NUL-ended on standard input
    // and opened again, the screens seeing it unlocked throughout. A failure leaves it open
    // under the old password, or locked; open, it stays guarded by the automatic lock.
    void changePassword_data() {
        QTest::addColumn<Replies>("replies");
        QTest::addColumn<Error>("error");
        QTest::addColumn<QString>("inForce"); // the password the open vault answers to
        const HDIUtilResult attached = RecordingRunner::attached(kMount + " 1"), full{1, {}, "disk full"};
        const Error io = Case::ioFailed;
        QTest::newRow("re-keyed") << Replies{kOk, kOk, attached} << Error() << "new";
        QTest::newRow("detach fails even forced") << Replies{kBusy, kBusy} << Error(Case::unmountFailed) << "old pä";
        QTest::newRow("re-key fails, reopened") << Replies{kOk, full, attached} << io << "old pä";
        QTest::newRow("re-key fails, reopen fails") << Replies{kOk, full, {1, {}, "no"}} << io << QString();
        QTest::newRow("re-keyed, reopen fails") << Replies{kOk, kOk, {0, "?", ""}} << Error(Case::mountFailed) << "";
    }
    void changePassword() {
        QFETCH(Replies, replies);
        QFETCH(Error, error);
        QFETCH(QString, inForce);
        const QString old = QString::fromUtf8("old pä");
        auto vault = makeUnlockedVault(old);
        QSignalSpy unlockedSpy(vault.get(), &VaultManager::isUnlockedChanged);
        m_tool.replies = replies;
        QCOMPARE(kindOf([&] { vault->changePassword(old, "new"); }), error);
        QVERIFY(m_tool.replies.isEmpty());
        QCOMPARE(unlockedSpy.count(), inForce.isEmpty() ? 1 : 0);
        QCOMPARE(vault->isUnlocked(), !inForce.isEmpty());
        QCOMPARE(idleLockPending(*vault), !inForce.isEmpty());
        if (!error) {
            QCOMPARE(m_tool.calls, (QList<Call>{{{"detach", kMount}, std::nullopt},
                                                {{"chpass", "-oldstdinpass", "-newstdinpass", image()},
                                                 old + QChar(0) + "new" + QChar(0)},
                                                {attachArgs(image()), QString("new")}}));
            QCOMPARE(published(*vault), "open at " + kMount + " 1");
        }
        // Checked in memory against the password in force (the tool here would take any).
        if (!inForce.isEmpty()) {
            QCOMPARE(kindOf([&] { vault->changePassword(inForce == old ? "new" : old, "x"); }),
                     Case::incorrectPassword);
        }
    }

    // The automatic lock detaches when it fires; one that fails leaves the vault open but
    // does not try again and again.
    void idleTimerLocksWhenItFires_data() {
        QTest::addColumn<Replies>("replies");
        QTest::newRow("detached") << Replies{};
        QTest::newRow("busy even forced") << Replies{kBusy, kBusy};
    }
    void idleTimerLocksWhenItFires() {
        QFETCH(Replies, replies);
        auto vault = makeVault(true);
        vault->setIdleTimeoutSeconds(0.05);
        m_tool.replies = {RecordingRunner::attached(kMount)};
        vault->unlock("pw");
        m_tool.replies = replies;
        QTRY_COMPARE(m_tool.calls.size(), replies.isEmpty() ? 2 : 4);
        QCOMPARE(vault->isUnlocked(), !replies.isEmpty());
        QVERIFY(!idleLockPending(*vault));
    }

    void runsTheToolWithExactBytesAndReportsWhatItSaid() {
        // The password's UTF-8 bytes exactly, NULs and spaces kept, no terminator, on a pipe;
        // no pipe at all when there is nothing to give.
        const QString seen = "[ -p /dev/stdin ] && k=pipe || k=other; printf '%s %s' \"$(od -An -tx1 -v | "
                             "tr -d ' \\n')\" $k";
        QCOMPARE(runScript(seen, QString::fromUtf8(" \xc3\xa9\0", 4)).stdout, "20c3a900 pipe");
        QCOMPARE(runScript(seen, std::nullopt).stdout, " other");
        QCOMPARE(runScript("printf 'out %s|' \"$@\"; echo err >&2; exit 3", std::nullopt,
                           {"a b", "-c;d", "ü"}),
                 (HDIUtilResult{3, "out a b|out -c;d|out ü|", "err\n"}));
        // More than a pipe holds, to a tool that exits at once: the write fails, quietly.
        QCOMPARE(runScript("exit 4", QString(1 << 20, 'x')).status, 4);
        const HDIUtilResult missing =
            runHDIUtilProgram("/nonexistent/morvanta-hdiutil", {"info"}, QString("x"));
        QCOMPARE(missing.status, -1);
        QVERIFY2(missing.stderr.contains("No such file"), qPrintable(missing.stderr));
        QVERIFY(runHDIUtilProcess({"info", "-plist"}, std::nullopt).stdout.contains("<key>images</key>"));
    }

    // The first non-blank mount point; nothing from a list an entity of which is not a
    // dictionary, nested too deeply for a recursive parser, or cut short.
    void findsTheMountPointInWhateverTheToolSays() {
        QCOMPARE(parseMountPoint(QString::fromUtf8(kAttachXml)), QString::fromUtf8("/Volumes/MorvantaVault ünï"));
        QCOMPARE(parseMountPoint(QByteArray("<plist><dict><key>system-entities</key><array><string>/y</string>"
                                            "<dict><key>mount-point</key><string>/x</string></dict>"
                                            "</array></dict></plist>")),
                 std::nullopt);
        const QByteArray deep = "<plist><dict><key>system-entities</key>" +
                                QByteArray("<array>").repeated(300000) +
                                QByteArray("</array>").repeated(300000) + "</dict></plist>";
        QCOMPARE(parseMountPoint(deep), std::nullopt);
        QCOMPARE(parseMountPoint(QString::fromUtf8(kAttachXml).left(200)), std::nullopt);
    }
};

QTEST_GUILESS_MAIN(TestVaultManager)
#include "tst_vaultmanager.moc"
