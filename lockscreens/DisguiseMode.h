#pragma once

#include <QList>
#include <QString>

#include <optional>

// How the lock and first-run screens present themselves to an onlooker. Stored as its raw
// text under "disguiseMode"; a text that names no case counts as `none` everywhere.
enum class DisguiseMode { none, neutral, math };

QList<DisguiseMode> allDisguiseModes();
QString rawValue(DisguiseMode mode);
std::optional<DisguiseMode> disguiseModeFromRaw(const QString& raw);
// The stored text as the screens read it: unknown or empty text is `none`.
DisguiseMode disguiseModeOrNone(const QString& raw);
// Whether first-run screens use account wording instead of vault wording.
bool isDisguised(const QString& raw);
// The window title, the same in every state so the window never gives the vault away.
QString windowTitle(const QString& raw);
