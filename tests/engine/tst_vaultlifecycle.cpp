// The vault's whole life against real gocryptfs on FUSE, through the disk-image tool.

#include "engine/VaultManager.h"
#include "platform/Process.h"
#include "support/Errors.h"
#include "support/FuseHarness.h"
#include "support/RecordingRunner.h"
#include "support/Trees.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <atomic>
#include <thread>

class VaultManagerTestAccess {
public:
    static bool remembersPassword(const VaultManager& vault) { return vault.m_unlockedPassword.has_value(); }
};

using namespace testsupport;

namespace {

// Watches every process's command line and environment for a secret while `operation` runs.
QStringList processesHoldingDuring(const QByteArray& secret, const std::function<void()>& operation) {
    std::atomic<bool> done = false;
    QStringList hits;
    std::thread watcher([&] {
        while (!done)
            hits += testsupport::processesHolding(secret);
    });
    operation();
    done = true;
    watcher.join();
    hits.removeDuplicates();
    return hits;
}

void fillWithMixedContent(const QString& root) {
    QDir().mkpath(root + "/Tax 2025/receipts");
    QDir().mkpath(root + "/empty folder");
    writeFile(root + "/notes ü.txt", "plain text\n");
    writeFile(root + "/.hidden", "hidden");
    writeFile(root + "/Tax 2025/receipts/scan.bin", QByteArray(300000, '\0') + "tail");
    writeFile(root + "/Tax 2025/data.bin", QByteArray::number(QRandomGenerator::global()->generate64()).repeated(9999));
    QFile::link("notes ü.txt", root + "/link to notes");
}

// The way to open a backup without Morvanta: `7z x FILE`, which asks for the password.
int extractBackup(const QString& file, const QString& into, const QByteArray& password) {
    QDir().mkpath(into);
    return platform::runProcess("/usr/bin/7z", {"x", file.toStdString()}, (password + "\n").toStdString(),
                                platform::OutputCapture::MemoryFiles, into.toStdString())
        .status;
}

// The start of a PNG, up to a text chunk of the given type holding Thumb::URI, as thumbnailers
// other than Qt write it: all that is read of it. (Its checksum is not checked.)
QByteArray pngWithText(const QByteArray& type, const QByteArray& value) {
    const QByteArray data = QByteArray("Thumb::URI\0", 11) + value;
    QByteArray length(4, '\0');
    qToBigEndian<quint32>(quint32(data.size()), length.data());
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + length + type + data + QByteArray(4, '\0');
}

} // namespace

class TestVaultLifecycle : public QObject {
    Q_OBJECT

    std::unique_ptr<testsupport::ScopedRuntimeDir> m_runtime;
    // The support folder, and the home of everything the desktop keeps.
    std::unique_ptr<QTemporaryDir> m_support;
    QByteArray m_realHome = qgetenv("HOME");
    RecordingRunner m_tool;

    std::unique_ptr<VaultManager> makeVault() {
        return std::make_unique<VaultManager>(m_support->path(), m_tool.runner());
    }
    static QString mountPath(const VaultManager& vault) { return vault.mountPoint().toLocalFile(); }
    QString home(const QString& name) const { return m_support->filePath(name); }

private slots:
    void init() {
        REQUIRE_FUSE();
        m_runtime = std::make_unique<testsupport::ScopedRuntimeDir>();
        m_support = std::make_unique<QTemporaryDir>();
        qputenv("HOME", QFile::encodeName(m_support->path()));
        for (const char* variable : {"XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME"})
            qunsetenv(variable);
        m_tool = RecordingRunner{{}, {}, testsupport::fastToolRunner()};
    }
    void cleanup() {
        qputenv("HOME", m_realHome);
        m_support.reset();
        m_runtime.reset();
    }

    // Locking also clears what the desktop remembers of the vault's files: thumbnails as Qt,
    // GNOME (plain text chunks) and KDE (international ones) write them, and both
    // recently-used lists.
    void createUnlockLockAndReadBackWithoutTraces() {
        auto vault = makeVault();
        QCOMPARE(errorOf([&] { vault->unlock("pw"); }), "Vault not initialized.");
        const QString password = QString::fromUtf8("  pässwörd mit Leerzeichen ");
        vault->createVault(password);
        QCOMPARE(errorOf([&] { vault->createVault("other"); }), "Vault already exists.");

        vault->unlock(password);
        const QString mount = mountPath(*vault);
        // A file held open: the plain detach fails and the forced one closes the vault to it.
        QFile open(mount + "/note.txt");
        QVERIFY(open.open(QIODevice::ReadWrite) && open.write("kept under lock") == 15 && open.flush());
        // What lands in the vault is stored encrypted: the name shows nowhere in the image.
        QVERIFY(!QDir(vault->bundlePath()).entryList().join('|').contains("note"));
        const QByteArray inside = QUrl::fromLocalFile(mount + "/Holiday photo.jpg").toEncoded();
        const QByteArray outside = QUrl::fromLocalFile(home("public.jpg")).toEncoded();
        const QString thumbnails = home(".cache/thumbnails/");
        for (const QString& folder : {thumbnails + "normal", thumbnails + "fail/gnome-thumbnail-factory",
                                     home(".local/share/RecentDocuments")})
            QDir().mkpath(folder);
        for (const auto& [name, uri] : {std::pair{"normal/in.png", inside}, {"normal/out.png", outside}}) {
            QImage image(8, 8, QImage::Format_ARGB32);
            image.setText("Thumb::URI", QString::fromUtf8(uri));
            QVERIFY(image.save(thumbnails + name, "png"));
        }
        QVERIFY(writeFile(thumbnails + "fail/gnome-thumbnail-factory/in.png", pngWithText("tEXt", inside)));
        QVERIFY(writeFile(thumbnails + "normal/intl.png", pngWithText("iTXt", QByteArray(4, '\0') + inside)));
        QVERIFY(writeFile(home(".local/share/RecentDocuments/in.desktop"),
                          "[Desktop Entry]\nType=Link\nURL=" + inside + "\n"));
        QVERIFY(writeFile(home(".local/share/recently-used.xbel"), "<xbel version=\"1.0\"><bookmark href=\"" + inside +
                                                                       "\"/><bookmark href=\"" + outside + "\"/></xbel>"));

        vault->lock();
        QVERIFY(mountsBelow(m_runtime->path()).isEmpty());
        QVERIFY2(!QFileInfo::exists(mount), "the empty mount folder is removed");
        QVERIFY(!open.seek(0) || open.read(5).isEmpty());
        open.close();
        QCOMPARE(treeOf(thumbnails).keys(),
                 (QStringList{"fail", "fail/gnome-thumbnail-factory", "normal", "normal/out.png"}));
        QVERIFY(!QFileInfo::exists(home(".local/share/RecentDocuments/in.desktop")));
        const QByteArray recent = readFile(home(".local/share/recently-used.xbel"));
        QVERIFY2(!recent.contains("Holiday") && recent.contains("public.jpg"), recent.constData());

        vault->unlock(password);
        QCOMPARE(readFile(mountPath(*vault) + "/note.txt"), QByteArray("kept under lock"));
        vault->lock();
    }

    // The password shows on no command line, in no environment and no file, and is not kept
    // after a lock. The shipped tool with its real key derivation: the slower it is, the
    // longer a leak would be visible. Anything written "home" by any library is seen here.
    // A backup opens with the password in any archive manager and holds everything.
    void thePasswordStaysSecretAndOpensTheBackup() {
        m_tool.passThrough = [](const QStringList& args, const std::optional<QString>& input,
                                const HDIUtilOutputLine& onLine) {
            return runHDIUtilProgram(testsupport::shippedToolPath(), args, input, onLine);
        };
        const QByteArray secret = "Old-" + QByteArray::number(QRandomGenerator::system()->generate64(), 36);
        // The new one with every printable character, controls but a line feed, and near the
        // length limit; hunted for by its first part, which any leak of it would show.
        const QByteArray token = "New-" + QByteArray::number(QRandomGenerator::system()->generate64(), 36);
        QByteArray next = token + "\r\t" + QString(900, QChar(0xe9)).toUtf8();
        for (char c = ' '; c <= '~'; ++c)
            next += c;
        auto vault = makeVault();
        const auto createAndUnlock = [&] { vault->createVault(secret), vault->unlock(secret); };
        QCOMPARE(processesHoldingDuring(secret, createAndUnlock), QStringList());
        // Guessing costs more than with gocryptfs's own default of 2^16.
        const auto config = QJsonDocument::fromJson(readFile(vault->bundlePath() + "/gocryptfs.conf"));
        QVERIFY(config["ScryptObject"]["N"].toInt() > 1 << 16);
        fillWithMixedContent(mountPath(*vault));
        const auto before = treeOf(mountPath(*vault));
        QCOMPARE(processesHoldingDuring(secret, [&] { vault->changePassword(secret, next); }), QStringList());
        QCOMPARE(treeOf(mountPath(*vault)), before);

        // 7-Zip's own progress reaches the strip, only ever forwards, and ends complete.
        const QString backup = home("MorvantaVault-Backup.7z");
        QList<double> shares;
        auto watch = connect(vault.get(), &VaultManager::progressChanged, this,
                             [&] { shares.append(vault->progress().fraction); });
        QCOMPARE(processesHoldingDuring(token, [&] { vault->backupVault(QUrl::fromLocalFile(backup)); }),
                 QStringList());
        disconnect(watch);
        QVERIFY(std::is_sorted(shares.begin(), shares.end()));
        QVERIFY(shares.contains(0.0)); // 7-Zip's first report, as it starts writing
        QCOMPARE(shares.value(shares.size() - 1), 1.0);
        QCOMPARE(m_tool.calls.last(), (RecordingRunner::Call{{"create", "-encryption", "AES-256", "-stdinpass",
                                                              "-srcfolder", mountPath(*vault), "-volname",
                                                              "MorvantaVault", "-format", "UDZO", "-puppetstrings",
                                                              "-ov", backup},
                                                             QString::fromUtf8(next)}));
        QCOMPARE(extractBackup(backup, home("first"), next), 0);
        QCOMPARE(treeOf(home("first")), before);
        QVERIFY(extractBackup(backup, home("wrong"), secret) != 0);
        QCOMPARE(QDir(home("wrong")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), QStringList());

        // A second backup to the same file replaces the first rather than adding to it; one
        // that does not read back is not kept (the cheap-key tool damages one on request).
        m_tool.passThrough = testsupport::fastToolRunner();
        QVERIFY(QFile::remove(mountPath(*vault) + "/notes ü.txt"));
        QVERIFY(writeFile(mountPath(*vault) + "/new.txt", "second"));
        vault->backupVault(QUrl::fromLocalFile(backup));
        QCOMPARE(extractBackup(backup, home("second"), next), 0);
        QCOMPARE(treeOf(home("second")), treeOf(mountPath(*vault)));
        const QByteArray good = readFile(backup);
        qputenv("MORVANTA_TEST_DAMAGE_BACKUP", "1");
        const QString error = errorOf([&] { vault->backupVault(QUrl::fromLocalFile(backup)); });
        qunsetenv("MORVANTA_TEST_DAMAGE_BACKUP");
        QVERIFY2(error.contains("the backup could not be read back"), qPrintable(error));
        QCOMPARE(readFile(backup), good);
        QCOMPARE(QDir(m_support->path()).entryList({"*.partial-*"}), QStringList());

        vault->lock();
        QVERIFY(!VaultManagerTestAccess::remembersPassword(*vault));
        for (const QByteArray& password : {secret, token}) {
            QCOMPARE(testsupport::processesHolding(password), QStringList());
            for (const QString& folder : {m_support->path(), m_runtime->path()})
                QCOMPARE(testsupport::filesHolding(folder, password), QStringList());
        }
        // The new key opens the same files, the old one nothing.
        QCOMPARE(errorOf([&] { vault->unlock(secret); }), "Authentication failed.");
        vault->unlock(next);
        QCOMPARE(treeOf(mountPath(*vault)), treeOf(home("second")));
        vault->lock();
    }
};

QTEST_GUILESS_MAIN(TestVaultLifecycle)
#include "tst_vaultlifecycle.moc"
