// Work off the window's thread on a real vault. A file layer that holds the work at its
// first chunk until the test lets it go makes each moment certain, without timing.

#include "platform/Process.h"
#include "support/FileLayers.h"
#include "support/Trees.h"
#include "support/VaultTestCase.h"

#include <QRandomGenerator>
#include <QSemaphore>
#include <QTest>
#include <QThread>

using namespace testsupport;

class VaultManagerTestAccess {
public:
    static bool cancelRequested(const VaultManager& vault) { return vault.m_cancelRequested; }
};

class TestBackgroundWork : public VaultTestCase {
    Q_OBJECT

    std::shared_ptr<GatedFileLayer> m_files;
    std::optional<std::optional<VaultError>> m_result;

    // Runs `work` with a file layer that holds it at its first chunk, and returns once held.
    void runHeld(const std::function<void(VaultManager&)>& work) {
        m_files = std::make_shared<GatedFileLayer>();
        m_vault->setFileLayer(m_files);
        run(work);
        QTRY_VERIFY(m_files->reachedGate.available() > 0);
    }
    void run(const std::function<void(VaultManager&)>& work) {
        m_result.reset();
        m_vault->runInBackground(work, [this](const std::optional<VaultError>& error) { m_result = error; });
    }
    QStringList vaultEntries() const {
        QStringList names = QDir(inVault({})).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
        names.removeAll(".morvanta-origins.json");
        return names;
    }

private slots:
    // A move runs off this thread with its progress in order, to its end or until a cancel or
    // a lock stops it with every byte where it was.
    void aMoveGoesOnUntilCancelledOrLocked_data() {
        QTest::addColumn<QString>("how");
        for (const char* how : {"let go", "cancel", "lock", "lock in background"})
            QTest::newRow(how) << QString(how);
    }
    void aMoveGoesOnUntilCancelledOrLocked() {
        QFETCH(QString, how);
        QList<WorkProgress> seen;
        QObject watching; // stops watching when this test ends, however it ends
        connect(m_vault.get(), &VaultManager::progressChanged, &watching, [&] { seen.append(m_vault->progress()); });
        QVERIFY(writeFile(home("film.mkv"), QByteArray(24 << 20, 'f')));
        runHeld([this](VaultManager& vault) { vault.addItem(url(home("film.mkv"))); });
        QVERIFY(m_vault->isWorking());
        if (how == "let go") {
            m_files->opened.release();
        } else if (how == "cancel") {
            m_vault->cancelWork();
        } else if (how == "lock") {
            m_vault->lock(); // returns once the work has rolled back and the vault is locked
        } else {
            bool locked = false;
            m_vault->lockInBackground([&](const auto& error) { locked = !error; });
            QVERIFY(m_vault->isUnlocked()); // this thread waited for neither rollback nor detach
            QTRY_VERIFY(locked);
        }
        QTRY_VERIFY(m_result.has_value());
        QVERIFY(!m_vault->isWorking());
        // Each step no smaller than the one before, all of the same item and total, and the
        // strip cleared at the end.
        QVERIFY(seen.size() >= 2);
        for (qsizetype i = 1; i + 1 < seen.size(); ++i) {
            QCOMPARE(seen[i].name, QString("film.mkv"));
            QCOMPARE(seen[i].bytesTotal, double(24 << 20));
            QVERIFY(seen[i].bytesDone >= seen[i - 1].bytesDone);
        }
        QCOMPARE(seen.last(), WorkProgress());
        if (how == "let go") {
            QCOMPARE(*m_result, std::nullopt);
            QCOMPARE(m_vault->items().size(), 1);
            return;
        }
        QVERIFY(*m_result && VaultManager::wasCancelled(**m_result));
        QCOMPARE(m_vault->isUnlocked(), how == "cancel");
        QCOMPARE(testsupport::mountsBelow(m_runtime->path()).isEmpty(), how != "cancel");
        if (!m_vault->isUnlocked())
            m_vault->unlock("pw");
        QCOMPARE(readFile(home("film.mkv")), QByteArray(24 << 20, 'f'));
        QCOMPARE(vaultEntries(), QStringList());
        QVERIFY(!m_vault->restoreFolder(url(inVault("film.mkv"))));
    }

    // Counted first, for the progress strip; a lock stops it part-way.
    void aDeletionCountsFirstAndStopsPartWay() {
        QVERIFY(QDir().mkpath(inVault("Pics")));
        for (int i = 0; i < 40; ++i)
            QVERIFY(writeFile(inVault(QString("Pics/%1.jpg").arg(i)), QByteArray(1000, 'p')));
        runHeld([this](VaultManager& vault) { vault.deleteItem(url(inVault("Pics"))); });
        QTRY_COMPARE(m_vault->progress(), (WorkProgress{"Pics", 1000, 40000, 1, 41, -1}));
        m_vault->lock();
        QVERIFY(m_result && *m_result && VaultManager::wasCancelled(**m_result));
        m_vault->unlock("pw");
        QCOMPARE(QDir(inVault("Pics")).entryList(QDir::Files).size(), 39);
    }

    void aLockDismissesAWaitingAdministratorPrompt() {
        if (::geteuid() != 0)
            QSKIP("needs root to mount a read-only folder");
        testsupport::ScopedTmpfs protectedFolder(home("Protected"));
        QVERIFY(protectedFolder.mounted());
        QVERIFY(writeFile(home("Protected/app.bin"), "binary"));
        QVERIFY(protectedFolder.setReadOnly(true));
        QSemaphore prompted;
        // The prompt waits for an answer, as pkexec's would.
        m_vault->setElevationRunner([&](const QStringList&, const QByteArray&) {
            prompted.release();
            return platform::runProcess("/bin/sleep", {"60"}, std::nullopt).status;
        });
        run([this](VaultManager& vault) { vault.addItem(url(home("Protected/app.bin"))); });
        QTRY_VERIFY(prompted.available() > 0);

        m_vault->lock();
        QTRY_VERIFY(m_result.has_value());
        QVERIFY(*m_result && m_result->value().kind() == VaultError::Case::cannotRemoveSource);
        QCOMPARE(readFile(home("Protected/app.bin")), "binary");
        m_vault->unlock("pw");
        QCOMPARE(vaultEntries(), QStringList());
    }

    // Whichever of its steps a password change is in when the lock comes, it ends locked and
    // unmounted, under the password in force once that step is over.
    void aLockDuringAPasswordChangeLeavesOnePasswordThatOpens_data() {
        QTest::addColumn<QString>("step");
        QTest::addColumn<QString>("inForce");
        for (const auto& [step, inForce] : {std::pair{"detach", "pw"}, {"chpass", "new"}, {"attach", "new"}})
            QTest::newRow(step) << QString(step) << QString(inForce);
    }
    void aLockDuringAPasswordChangeLeavesOnePasswordThatOpens() {
        QFETCH(QString, step);
        QFETCH(QString, inForce);
        m_vault->lock();
        std::atomic<bool> armed = false;
        // The step ends only once the lock has been asked for: it came while the step ran.
        m_vault = std::make_unique<VaultManager>(
            home(".support"), [&, tool = testsupport::fastToolRunner()](const QStringList& args, const auto& input,
                                                                        const HDIUtilOutputLine& onLine) {
                const HDIUtilResult result = tool(args, input, onLine);
                if (args.first() == step && armed.exchange(false)) {
                    QMetaObject::invokeMethod(m_vault.get(), [this] { m_vault->lock(); });
                    while (!VaultManagerTestAccess::cancelRequested(*m_vault))
                        QThread::msleep(1);
                }
                return result;
            });
        m_vault->unlock("pw");
        armed = true;
        run([](VaultManager& vault) { vault.changePassword("pw", "new"); });
        QTRY_VERIFY(m_result.has_value());
        QVERIFY(!m_vault->isUnlocked());
        QCOMPARE(testsupport::mountsBelow(m_runtime->path()), QStringList());
        m_vault->unlock(inForce);
    }

    void aLockStopsABackupAndKeepsThePreviousOne() {
        QByteArray noise(150 << 20, Qt::Uninitialized); // incompressible: 7z takes a while
        QRandomGenerator(7).fillRange(reinterpret_cast<quint32*>(noise.data()), noise.size() / 4);
        QVERIFY(writeFile(inVault("film.mkv"), noise));
        QVERIFY(writeFile(home("backup.7z"), "the previous backup"));
        run([this](VaultManager& vault) { vault.backupVault(url(home("backup.7z"))); });
        const auto partials = [this] {
            return QDir(home()).entryInfoList({"backup.7z.partial-*"}, QDir::Files | QDir::Hidden);
        };
        QTRY_VERIFY(!partials().isEmpty() && partials().first().size() > 0); // 7z is writing

        m_vault->lock();
        QTRY_VERIFY(m_result.has_value());
        QVERIFY(*m_result && VaultManager::wasCancelled(**m_result));
        QCOMPARE(readFile(home("backup.7z")), "the previous backup");
        QCOMPARE(partials(), QFileInfoList());
        QVERIFY(testsupport::processesHolding(QFile::encodeName(home("backup.7z.partial-"))).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestBackgroundWork)
#include "tst_backgroundwork.moc"
