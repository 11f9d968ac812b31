#include "AppIdentity.h"

#include "AccessibleControls.h"
#include "WornIdentity.h"
#include "lockscreens/DisguiseMode.h"
#include "platform/Settings.h"

#include <QGuiApplication>
#include <QIcon>

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
    wearIdentity(identity.name, identity.desktopFileName, QIcon(identity.iconPath));
    setApplicationDescription(identity.description);
}

void followDisguise(platform::Settings& settings) {
    applyAppIdentity(appIdentityFor(settings.disguiseMode()));
    QObject::connect(&settings, &platform::Settings::disguiseModeChanged, &settings,
                     [&settings] { applyAppIdentity(appIdentityFor(settings.disguiseMode())); });
}
