#include "MainWindow.h"

#include "AccessibleControls.h"
#include "AppIdentity.h"
#include "AppPalette.h"
#include "ReturnPressesButtons.h"
#include "engine/VaultManager.h"
#include "platform/Panels.h"
#include "platform/Settings.h"
#include "platform/Workspace.h"

#include <QQmlApplicationEngine>
#include <QQuickWindow>

QQuickWindow* loadMainWindow(QQmlApplicationEngine& engine, VaultManager& vault,
                             platform::Settings& settings, platform::Panels& panels,
                             platform::Workspace& workspace) {
    applyAppPalette();
    installAccessibility();
    followDisguise(settings);
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    engine.setInitialProperties({{QStringLiteral("vault"), QVariant::fromValue(&vault)},
                                 {QStringLiteral("settings"), QVariant::fromValue(&settings)},
                                 {QStringLiteral("panels"), QVariant::fromValue(&panels)},
                                 {QStringLiteral("workspace"), QVariant::fromValue(&workspace)}});
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Morvanta/Main.qml")));
    const QList<QObject*> roots = engine.rootObjects();
    QQuickWindow* window = roots.isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(roots.first());
    if (window)
        letReturnPressButtons(window);
    return window;
}
