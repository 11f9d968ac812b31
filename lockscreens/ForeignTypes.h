#pragma once

#include "engine/VaultManager.h"
#include "platform/Settings.h"

#include <QtQml/qqml.h>

// The engine and the settings are made once by the application and handed to the screens;
// these make them known to QML by name, without letting QML create either.
struct VaultManagerForeign {
    Q_GADGET
    QML_FOREIGN(VaultManager)
    QML_NAMED_ELEMENT(VaultManager)
    QML_UNCREATABLE("The application makes the one engine.")
};

struct SettingsForeign {
    Q_GADGET
    QML_FOREIGN(platform::Settings)
    QML_NAMED_ELEMENT(Settings)
    QML_UNCREATABLE("The application makes the one settings store.")
};
