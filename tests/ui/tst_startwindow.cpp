// The start window, offscreen, against a real vault: it shows whether a vault exists and
// whether it is locked, and drives create, unlock and lock.

#include "app/VaultStatus.h"
#include "engine/VaultManager.h"
#include "support/FuseHarness.h"

#include <QDir>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QtQml/QQmlExtensionPlugin>

Q_IMPORT_QML_PLUGIN(MorvantaPlugin)

class TestStartWindow : public QObject {
    Q_OBJECT

    QQuickItem* item(QQuickWindow* window, const char* name) {
        auto* found = window->findChild<QQuickItem*>(name);
        if (!found)
            qFatal("no item named %s", name);
        return found;
    }
    void screenshot(QQuickWindow* window, const QString& name) {
        const QString folder = QStringLiteral(MORVANTA_SCREENSHOT_DIR);
        QDir().mkpath(folder);
        QVERIFY(window->grabWindow().save(folder + "/" + name + ".png"));
    }

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(".*")); }

    void showsTheStateAndDrivesTheVault() {
        REQUIRE_FUSE();
        testsupport::ScopedRuntimeDir runtime;
        QTemporaryDir support;
        VaultManager vault(support.path(), testsupport::fastToolRunner());
        VaultStatus status(vault);

        QQmlApplicationEngine engine;
        engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
        engine.setInitialProperties({{"status", QVariant::fromValue(&status)}});
        engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Morvanta/Main.qml")));
        QCOMPARE(engine.rootObjects().size(), 1);
        auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().first());
        QVERIFY(QTest::qWaitForWindowExposed(window));

        QQuickItem* state = item(window, "stateLabel");
        QQuickItem* field = item(window, "passwordField");
        QQuickItem* button = item(window, "actionButton");
        QCOMPARE(state->property("text").toString(), "No vault yet");
        QCOMPARE(button->property("text").toString(), "Create Vault");
        QVERIFY(!button->isEnabled());
        screenshot(window, "start-no-vault");

        field->setProperty("text", "a password");
        QVERIFY(button->isEnabled());
        QMetaObject::invokeMethod(button, "clicked");
        QVERIFY(vault.isUnlocked());
        QVERIFY(state->property("text").toString().startsWith("Unlocked"));
        QCOMPARE(field->property("text").toString(), QString());
        QVERIFY(!field->isVisible());
        screenshot(window, "start-unlocked");

        QMetaObject::invokeMethod(button, "clicked");
        QVERIFY(!vault.isUnlocked());
        QCOMPARE(state->property("text").toString(), "Locked");
        QCOMPARE(button->property("text").toString(), "Unlock");

        field->setProperty("text", "not it");
        QMetaObject::invokeMethod(button, "clicked");
        QVERIFY(!vault.isUnlocked());
        QCOMPARE(status.errorText(), "Authentication failed.");
        screenshot(window, "start-locked-error");
    }
};

QTEST_MAIN(TestStartWindow)
#include "tst_startwindow.moc"
