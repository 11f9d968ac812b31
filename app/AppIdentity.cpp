#include "AppIdentity.h"

#include "AccessibleControls.h"
#include "lockscreens/DisguiseMode.h"
#include "platform/Settings.h"

#include <QGuiApplication>
#include <QIcon>
#include <QWindow>

AppIdentity appIdentityFor(const QString& disguiseRaw) {
    const QString name = windowTitle(disguiseRaw);
    switch (disguiseModeOrNone(disguiseRaw)) {
    case DisguiseMode::neutral:
        return {name, QCoreApplication::translate("AppIdentity", "Sign in to your workspace"),
                QStringLiteral("workspace"),
                QStringLiteral(":/qt/qml/Morvanta/icons/workspace.svg")};
    case DisguiseMode::math:
        return {name, QCoreApplication::translate("AppIdentity", "Arithmetic practice"),
                QStringLiteral("calculator"),
                QStringLiteral(":/qt/qml/Morvanta/icons/calculator.svg")};
    case DisguiseMode::none:
        break;
    }
    return {name,
            QCoreApplication::translate("AppIdentity",
                                        "Keep sensitive files, folders and apps in one encrypted "
                                        "vault"),
            QStringLiteral("morvanta"),
            QStringLiteral(":/qt/qml/Morvanta/LockScreens/morvanta.svg")};
}

void applyAppIdentity(const AppIdentity& identity) {
    // Read by X11 when the first window is made, for the instance half of its class; the
    // other half is the application name.
    if (QGuiApplication::allWindows().isEmpty())
        qputenv("RESOURCE_NAME", identity.desktopFileName.toLocal8Bit());
    // Settings already opened keep their file; nothing opens one by the application's name
    // after the start.
    QGuiApplication::setApplicationName(identity.name);
    QGuiApplication::setApplicationDisplayName(identity.name);
    QGuiApplication::setDesktopFileName(identity.desktopFileName);
    setApplicationDescription(identity.description);
    const QIcon icon(identity.iconPath);
    QGuiApplication::setWindowIcon(icon);
    for (QWindow* window : QGuiApplication::topLevelWindows())
        window->setIcon(icon);
}

void followDisguise(platform::Settings& settings) {
    applyAppIdentity(appIdentityFor(settings.disguiseMode()));
    QObject::connect(&settings, &platform::Settings::disguiseModeChanged, &settings,
                     [&settings] { applyAppIdentity(appIdentityFor(settings.disguiseMode())); });
}
