#include "VaultStatus.h"
#include "engine/VaultManager.h"

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QUrl>
#include <QtQml/QQmlExtensionPlugin>

#include <sys/prctl.h>
#include <sys/resource.h>

Q_IMPORT_QML_PLUGIN(MorvantaPlugin)

int main(int argc, char* argv[]) {
    // The master password lives in this process while the vault is open: never in a core
    // file, and no other process of the user may read this one's memory.
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    prctl(PR_SET_DUMPABLE, 0);

    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("Morvanta"));
    QGuiApplication::setDesktopFileName(QStringLiteral("morvanta"));

    VaultManager vault;
    VaultStatus status(vault);

    // Quitting locks an open vault; a failure cannot be shown any more and is dropped.
    QObject::connect(&app, &QGuiApplication::aboutToQuit, [&vault] {
        if (vault.isUnlocked()) {
            try {
                vault.lock();
            } catch (const VaultError&) {
            }
        }
    });

    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    engine.setInitialProperties({{QStringLiteral("status"), QVariant::fromValue(&status)}});
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Morvanta/Main.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;
    return app.exec();
}
