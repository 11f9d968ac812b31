#include "engine/VaultError.h"

#include <QTest>

Q_DECLARE_METATYPE(VaultError)

class TestVaultError : public QObject {
    Q_OBJECT

private slots:
    void describesEveryCase_data() {
        QTest::addColumn<VaultError>("error");
        QTest::addColumn<QString>("text");

        QTest::newRow("mountFailed hides its payload")
            << VaultError::mountFailed("Wrong password or corrupt vault.")
            << "Authentication failed.";
        QTest::newRow("mountFailed, mount point")
            << VaultError::mountFailed("Could not determine mount point.")
            << "Authentication failed.";
        QTest::newRow("unmountFailed keeps a trailing newline")
            << VaultError::unmountFailed("busy\n") << "Lock failed: busy\n";
        QTest::newRow("unmountFailed, empty payload") << VaultError::unmountFailed("")
                                                      << "Lock failed: ";
        QTest::newRow("createFailed") << VaultError::createFailed("  no space ")
                                      << "Create failed:   no space ";
        QTest::newRow("ioFailed, two lines")
            << VaultError::ioFailed("Password change failed: x\nCould not reopen vault: y")
            << "IO failed: Password change failed: x\nCould not reopen vault: y";
        QTest::newRow("cannotMoveSource")
            << VaultError::cannotMoveSource("Notes.app")
            << QString::fromUtf8("“Notes.app” can’t be added — it’s a protected system item, or "
                                 "you don’t have permission to move it from its current "
                                 "location.");
        QTest::newRow("cannotRemoveSource")
            << VaultError::cannotRemoveSource("Tool")
            << QString::fromUtf8("“Tool” wasn’t added — its original couldn’t be removed from "
                                 "its current location (the administrator prompt was cancelled "
                                 "or failed). Nothing was left in the vault.");
        QTest::newRow("alreadyExists") << VaultError::alreadyExists() << "Vault already exists.";
        QTest::newRow("notInitialized") << VaultError::notInitialized()
                                        << "Vault not initialized.";
        QTest::newRow("incorrectPassword")
            << VaultError::incorrectPassword() << "Current password is incorrect.";
        QTest::newRow("notMounted") << VaultError::notMounted() << "Vault not mounted.";
    }

    void describesEveryCase() {
        QFETCH(VaultError, error);
        QFETCH(QString, text);
        QCOMPARE(error.errorDescription(), text);
        QCOMPARE(QString::fromUtf8(error.what()), text);
    }

    void keepsThePayloadItHides() {
        const VaultError error = VaultError::mountFailed("gocryptfs: Password incorrect.");
        QCOMPARE(error.kind(), VaultError::Case::mountFailed);
        QCOMPARE(error.payload(), QStringLiteral("gocryptfs: Password incorrect."));
        QVERIFY(!error.errorDescription().contains("gocryptfs"));
    }
};

QTEST_GUILESS_MAIN(TestVaultError)
#include "tst_vaulterror.moc"
