#include "DisguiseMode.h"

#include <QCoreApplication>

QList<DisguiseMode> allDisguiseModes() {
    return {DisguiseMode::none, DisguiseMode::neutral, DisguiseMode::math};
}

QString rawValue(DisguiseMode mode) {
    switch (mode) {
    case DisguiseMode::none:
        return QStringLiteral("none");
    case DisguiseMode::neutral:
        return QStringLiteral("neutral");
    case DisguiseMode::math:
        return QStringLiteral("math");
    }
    return {};
}

std::optional<DisguiseMode> disguiseModeFromRaw(const QString& raw) {
    for (DisguiseMode mode : allDisguiseModes()) {
        if (rawValue(mode) == raw)
            return mode;
    }
    return std::nullopt;
}

DisguiseMode disguiseModeOrNone(const QString& raw) {
    return disguiseModeFromRaw(raw).value_or(DisguiseMode::none);
}

bool isDisguised(const QString& raw) {
    return disguiseModeOrNone(raw) != DisguiseMode::none;
}

QString windowTitle(const QString& raw) {
    switch (disguiseModeOrNone(raw)) {
    case DisguiseMode::none:
        return QStringLiteral("Morvanta");
    case DisguiseMode::neutral:
        return QCoreApplication::translate("DisguiseMode", "Workspace");
    case DisguiseMode::math:
        return QCoreApplication::translate("DisguiseMode", "Calculator");
    }
    return {};
}
