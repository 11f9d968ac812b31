// The engine against a recording runner: the exact argument lists and standard input it
// gives the disk-image tool, and the state it publishes after every answer.

#include "engine/VaultManager.h"
#include "support/Errors.h"
#include "support/RecordingRunner.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

Q_DECLARE_METATYPE(HDIUtilResult)
Q_DECLARE_METATYPE(VaultError)


namespace {

using Call = RecordingRunner::Call;

const QString kMount = QStringLiteral("/run/user/1000/morvanta/MorvantaVault");

using testsupport::thrownBy;

QStringList attachArgs(const QString& image) {
    return {"attach", "-stdinpass", "-plist", "-nobrowse", image};
}

QStringList chpassArgs(const QString& image) {
    return {"chpass", "-oldstdinpass", "-newstdinpass", image};
}

bool idleLockPending(const VaultManager& vault) { return !vault.idleLockDeadline().isForever(); }

// The published fields, compared as one.
struct Published {
    bool isUnlocked;
    QUrl mountPoint;
    bool operator==(const Published&) const = default;
};

Published published(const VaultManager& vault) {
    return {vault.isUnlocked(), vault.mountPoint()};
}

char* toString(const Published& p) {
    return qstrdup(QStringLiteral("{unlocked %1, mount '%2'}")
                       .arg(p.isUnlocked)
                       .arg(p.mountPoint.toString())
                       .toUtf8());
}

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

    void constructionMakesTheSupportFolderAndRunsNothingWithoutAnImage() {
        VaultManager vault(supportDir(), m_tool.runner());
        QVERIFY(QFileInfo(supportDir()).isDir());
        QCOMPARE(vault.bundleURL(), QUrl::fromLocalFile(image()));
        QVERIFY(!vault.vaultExists());
        QVERIFY(m_tool.calls.isEmpty());
        QCOMPARE(published(vault), (Published{false, {}}));
        QCOMPARE(vault.idleTimeoutSeconds(), 300.0);
    }

    // Of this image's mounts, those whose app is gone or unknown; never another image's,
    // never a running first instance's.
    void constructionDetachesOnlyMountsOfItsImageLeftByAnAppThatIsGone() {
        QDir().mkpath(image());
        const auto entry = [](const QString& path, const QString& mount, const QString& owner) {
            return "<dict><key>image-path</key><string>" + path + "</string>" + owner +
                   "<key>system-entities</key><array><dict><key>mount-point</key><string>" + mount +
                   "</string></dict></array></dict>";
        };
        const QString info = "<plist><dict><key>images</key><array>" +
                             entry("/elsewhere/vault.gocryptfs", "/run/other", {}) +
                             entry(image(), "/run/live", "<key>owner-alive</key><true/>") +
                             entry(image(), "/run/crashed", "<key>owner-alive</key><false/>") +
                             entry(image(), "/run/unknown", {}) + "</array></dict></plist>";
        m_tool.replies = {{0, info, {}}};
        VaultManager vault(supportDir(), m_tool.runner());
        QCOMPARE(m_tool.calls, (QList<Call>{{{"info", "-plist"}, std::nullopt},
                                            {{"detach", "-force", "/run/crashed"}, std::nullopt},
                                            {{"detach", "-force", "/run/unknown"}, std::nullopt}}));
        QVERIFY(!vault.isUnlocked());
    }

    void createRunsTheToolWithThePasswordOnStdin_data() {
        QTest::addColumn<QString>("password");
        QTest::newRow("spaces") << " correct horse ";
        QTest::newRow("non-ASCII") << QString::fromUtf8("pässwörd ✓ 🙂");
    }
    void createRunsTheToolWithThePasswordOnStdin() {
        QFETCH(QString, password);
        auto vault = makeVault(false);
        vault->createVault(password);
        QCOMPARE(m_tool.calls, (QList<Call>{{RecordingRunner::createArgs(image()), password}}));
        // Creating does not unlock.
        QCOMPARE(published(*vault), (Published{false, {}}));
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
        QTest::newRow("2,048 bytes of emoji")
            << QString::fromUcs4(QList<char32_t>(512, 0x1F600).data(), 512) << true;
        QTest::newRow("carriage return") << "a\rb" << true;
    }
    void unusablePasswordsNeverReachTheTool() {
        QFETCH(QString, password);
        QFETCH(bool, usable);
        const auto refused = [&](const std::function<void()>& operation) {
            m_tool.calls.clear();
            try {
                operation();
            } catch (const VaultError& error) {
                return error.kind() == VaultError::Case::ioFailed && m_tool.calls.isEmpty();
            }
            return false;
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

    void createReportsTheToolsOutput_data() {
        QTest::addColumn<HDIUtilResult>("reply");
        QTest::addColumn<QString>("payload");
        QTest::newRow("stderr first") << HDIUtilResult{1, "out", "no space\n"} << "no space\n";
        QTest::newRow("else stdout") << HDIUtilResult{2, "out only", ""} << "out only";
    }
    void createReportsTheToolsOutput() {
        QFETCH(HDIUtilResult, reply);
        QFETCH(QString, payload);
        auto vault = makeVault(false);
        m_tool.replies = {reply};
        QCOMPARE(thrownBy([&] { vault->createVault("pw"); }), VaultError::createFailed(payload));
    }

    void unlockAttachesAndPublishes() {
        auto vault = makeVault(true);
        QSignalSpy unlockedSpy(vault.get(), &VaultManager::isUnlockedChanged);
        QSignalSpy mountSpy(vault.get(), &VaultManager::mountPointChanged);
        const QString password = QString::fromUtf8("  späce ");
        m_tool.replies = {RecordingRunner::attached(kMount)};

        vault->unlock(password);

        QCOMPARE(m_tool.calls, (QList<Call>{{attachArgs(image()), password}}));
        QCOMPARE(published(*vault), (Published{true, QUrl::fromLocalFile(kMount)}));
        QCOMPARE(unlockedSpy.count(), 1);
        QCOMPARE(mountSpy.count(), 1);
    }

    void unlockFailuresLeaveTheVaultLocked_data() {
        QTest::addColumn<HDIUtilResult>("reply");
        QTest::addColumn<QString>("payload");
        QTest::newRow("wrong password") << HDIUtilResult{1, "", "Password incorrect.\n"}
                                        << "Password incorrect.\n";
        QTest::newRow("silent failure") << HDIUtilResult{12, "ignored", ""}
                                        << "Wrong password or corrupt vault.";
        QTest::newRow("tool missing") << HDIUtilResult{-1, "", "Could not start"}
                                      << "Could not start";
        QTest::newRow("no property list") << HDIUtilResult{0, "mounted!", ""}
                                          << "Could not determine mount point.";
        QTest::newRow("no mount point") << RecordingRunner::attached("")
                                        << "Could not determine mount point.";
    }
    void unlockFailuresLeaveTheVaultLocked() {
        QFETCH(HDIUtilResult, reply);
        QFETCH(QString, payload);
        auto vault = makeVault(true);
        QSignalSpy unlockedSpy(vault.get(), &VaultManager::isUnlockedChanged);
        m_tool.replies = {reply};

        const VaultError error = thrownBy([&] { vault->unlock("pw"); }).value();

        QCOMPARE(error, VaultError::mountFailed(payload));
        QCOMPARE(error.errorDescription(), "Authentication failed.");
        QCOMPARE(published(*vault), (Published{false, {}}));
        QCOMPARE(unlockedSpy.count(), 0);
        // Nothing detaches after an attach whose mount point could not be read.
        QCOMPARE(m_tool.calls.size(), 1);
    }

    void lockDetachesAndForgetsThePassword() {
        auto vault = makeUnlockedVault();
        QSignalSpy itemsSpy(vault.get(), &VaultManager::itemsChanged);
        vault->lock();
        QCOMPARE(m_tool.calls, (QList<Call>{{{"detach", kMount}, std::nullopt}}));
        QCOMPARE(published(*vault), (Published{false, {}}));
        QCOMPARE(vault->items(), QList<VaultItem>());

        // The second lock finds nothing mounted and runs nothing.
        m_tool.calls.clear();
        QCOMPARE(thrownBy([&] { vault->lock(); }), VaultError::notMounted());
        QVERIFY(m_tool.calls.isEmpty());
    }

    void lockForcesWhenThePlainDetachFails() {
        auto vault = makeUnlockedVault();
        m_tool.replies = {{1, "", "Device or resource busy"}, {0, "", ""}};
        vault->lock();
        QCOMPARE(m_tool.argLists(),
                 (QList<QStringList>{{"detach", kMount}, {"detach", "-force", kMount}}));
        QCOMPARE(published(*vault), (Published{false, {}}));
    }

    void lockThatFailsEvenForcedKeepsTheVaultOpen_data() {
        QTest::addColumn<HDIUtilResult>("forced");
        QTest::addColumn<QString>("payload");
        QTest::newRow("stderr") << HDIUtilResult{1, "out", "still busy\n"} << "still busy\n";
        // Here stderr is taken as it stands, even when empty.
        QTest::newRow("empty stderr, no fallback") << HDIUtilResult{1, "out", ""} << "";
    }
    void lockThatFailsEvenForcedKeepsTheVaultOpen() {
        QFETCH(HDIUtilResult, forced);
        QFETCH(QString, payload);
        auto vault = makeUnlockedVault("kept");
        m_tool.replies = {{1, "", "busy"}, forced};
        QCOMPARE(thrownBy([&] { vault->lock(); }), VaultError::unmountFailed(payload));
        QCOMPARE(published(*vault), (Published{true, QUrl::fromLocalFile(kMount)}));
    }

    void lockFindsAVaultUnmountedFromOutsideLocked() {
        auto vault = makeUnlockedVault();
        m_tool.replies = {{1, {}, "not attached"},
                          {1, {}, "not attached"},
                          {0, "<plist><dict><key>images</key><array/></dict></plist>", {}}};
        vault->lock();
        QCOMPARE(m_tool.argLists().last(), (QStringList{"info", "-plist"}));
        QCOMPARE(published(*vault), (Published{false, {}}));
    }

    void publishLockedStateRunsNothing() {
        auto vault = makeUnlockedVault();
        QSignalSpy unlockedSpy(vault.get(), &VaultManager::isUnlockedChanged);
        vault->publishLockedState();
        QVERIFY(m_tool.calls.isEmpty());
        QCOMPARE(published(*vault), (Published{false, {}}));
        QCOMPARE(unlockedSpy.count(), 1);
    }

    // --- password change -----------------------------------------------------------------

    void changePasswordDetachesReKeysAndReopens() {
        auto vault = makeUnlockedVault(QString::fromUtf8("old pä"));
        QSignalSpy unlockedSpy(vault.get(), &VaultManager::isUnlockedChanged);
        const QString newMount = kMount + " 1";
        m_tool.replies = {{0, {}, {}}, {0, {}, {}}, RecordingRunner::attached(newMount)};

        vault->changePassword(QString::fromUtf8("old pä"), "new");

        const QString reKeyInput = QString::fromUtf8("old pä") + QChar(0) + "new" + QChar(0);
        QCOMPARE(m_tool.calls, (QList<Call>{{{"detach", kMount}, std::nullopt},
                                            {chpassArgs(image()), reKeyInput},
                                            {attachArgs(image()), QString("new")}}));
        QCOMPARE(published(*vault), (Published{true, QUrl::fromLocalFile(newMount)}));
        // The screens saw "unlocked" the whole time.
        QCOMPARE(unlockedSpy.count(), 0);
        QVERIFY(idleLockPending(*vault));
    }

    void changePasswordRefusalsRunNothing() {
        auto locked = makeVault(true);
        QCOMPARE(thrownBy([&] { locked->changePassword("pw", "x"); }), VaultError::notMounted());

        auto vault = makeUnlockedVault("pw");
        QCOMPARE(thrownBy([&] { vault->changePassword("pw ", "x"); }),
                 VaultError::incorrectPassword());
        QVERIFY(m_tool.calls.isEmpty());
        QVERIFY(vault->isUnlocked());

        QDir(image()).removeRecursively();
        QCOMPARE(thrownBy([&] { vault->changePassword("pw", "x"); }), VaultError::notInitialized());
        QVERIFY(m_tool.calls.isEmpty());
    }

    void changePasswordFailures_data() {
        QTest::addColumn<QList<HDIUtilResult>>("replies");
        QTest::addColumn<VaultError>("error");
        QTest::addColumn<bool>("unlockedAfter");

        const HDIUtilResult ok{0, {}, {}};
        const HDIUtilResult attached = RecordingRunner::attached(kMount);
        const HDIUtilResult badAttach{1, {}, "Password incorrect."};
        QTest::newRow("detach fails even forced")
            << QList<HDIUtilResult>{{1, {}, "busy"}, {1, "still busy", ""}}
            << VaultError::unmountFailed("still busy") << true;
        QTest::newRow("re-key fails, reopened")
            << QList<HDIUtilResult>{ok, {1, {}, "disk full"}, attached}
            << VaultError::ioFailed("Password change failed: disk full") << true;
        QTest::newRow("re-key fails, reopen fails")
            << QList<HDIUtilResult>{ok, {1, "no stderr", ""}, badAttach}
            << VaultError::ioFailed("Password change failed: no stderr\nCould not reopen vault: "
                                    "Authentication failed.")
            << false;
        QTest::newRow("re-keyed, reopen fails")
            << QList<HDIUtilResult>{ok, ok, {0, "not a plist", ""}}
            << VaultError::mountFailed("Could not determine mount point.") << false;
    }
    void changePasswordFailures() {
        QFETCH(QList<HDIUtilResult>, replies);
        QFETCH(VaultError, error);
        QFETCH(bool, unlockedAfter);
        auto vault = makeUnlockedVault("old");
        m_tool.replies = replies;

        QCOMPARE(thrownBy([&] { vault->changePassword("old", "new"); }), error);

        QCOMPARE(vault->isUnlocked(), unlockedAfter);
        // Still open means still under the old password, and still guarded by the automatic lock.
        if (unlockedAfter)
            QCOMPARE(thrownBy([&] { vault->changePassword("new", "x"); }), VaultError::incorrectPassword());
        QCOMPARE(idleLockPending(*vault), unlockedAfter);
        QVERIFY(m_tool.replies.isEmpty());
    }

    // --- the automatic lock --------------------------------------------------------------

    void idleTimerLocksWhenItFires() {
        auto vault = makeVault(true);
        vault->setIdleTimeoutSeconds(0.05);
        m_tool.replies = {RecordingRunner::attached(kMount)};
        vault->unlock("pw");
        QVERIFY(idleLockPending(*vault));
        QTRY_VERIFY(!vault->isUnlocked());
        QCOMPARE(m_tool.calls.last().args, (QStringList{"detach", kMount}));
        QVERIFY(!idleLockPending(*vault));
    }

    // The whole delay from the last action, or none at all when turned off.
    void idleDelayCountsFromTheLastAction() {
        auto vault = makeUnlockedVault();
        vault->setIdleTimeoutSeconds(900);
        vault->restartIdleTimer();
        QVERIFY(vault->idleLockDeadline().remainingTime() > 890000);
        vault->setIdleTimeoutSeconds(60);
        vault->restartIdleTimer();
        QVERIFY(vault->idleLockDeadline().remainingTime() < 70000);
        for (const double off : {0.0, -5.0}) {
            vault->setIdleTimeoutSeconds(off);
            vault->restartIdleTimer();
            QVERIFY(!idleLockPending(*vault));
        }
    }

    void idleTimerAfterAManualLockDoesNothing() {
        auto vault = makeUnlockedVault();
        vault->setIdleTimeoutSeconds(0.02);
        vault->restartIdleTimer();
        vault->lock();
        QTest::qWait(100);
        QCOMPARE(m_tool.calls.size(), 1);
        QVERIFY(!idleLockPending(*vault));
    }

    void idleLockThatFailsLeavesTheVaultOpenAndUnguarded() {
        auto vault = makeUnlockedVault();
        vault->setIdleTimeoutSeconds(0.02);
        m_tool.replies = {{1, {}, "busy"}, {1, {}, "busy"}};
        vault->restartIdleTimer();
        QTRY_COMPARE(m_tool.calls.size(), 3); // plain, forced, and asking what is attached
        QTest::qWait(20);
        QVERIFY(vault->isUnlocked());
        QVERIFY(!idleLockPending(*vault));
    }
};

QTEST_GUILESS_MAIN(TestVaultManager)
#include "tst_vaultmanager.moc"
