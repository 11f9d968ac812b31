#pragma once

#include "engine/WorkProgress.h"

#include <QDateTime>
#include <QLocale>
#include <QString>
#include <QUrl>

#include <optional>

// The texts the vault browser builds from state: the status bar, the table's cells and the
// wording of its prompts and confirmations.

// "Auto-lock: off", or the delay in whole minutes ("Auto-lock: 5m").
QString idleText(double idleTimeoutSeconds);
// "0 items", "1 item", "2 items".
QString itemCountText(qsizetype count);

// A byte count as a file manager shows it, in decimal units ("842 bytes", "1.5 kB",
// "12.3 MB"); "—" when the size is unknown.
QString byteCountText(std::optional<qint64> size, const QLocale& locale = QLocale());
// A date with the month abbreviated and the time to the minute, in the locale's order
// ("Mar 7, 2024, 4:05 PM"); "—" when there is none.
QString dateText(const std::optional<QDateTime>& date, const QLocale& locale = QLocale());

// What the rename prompt starts with: the name without its extension, if it has one.
QString renamePrefill(const QUrl& url);
// "“Photos” — 12.4 MB of 1.1 GB, 31 of 200 items", for the progress strip.
QString progressText(const WorkProgress& progress, const QLocale& locale = QLocale());
// The rename prompt's message, which says that the extension stays.
QString renameMessage(const QUrl& url);
// The restore confirmation's message: where the item goes. Without a known folder the last
// line reads "its original location/NAME"; that form is intended.
QString restoreMessage(const QString& name, const std::optional<QString>& folder);
QString deleteMessage(const QString& name);

// The lock button's help, with the shortcut in the platform's own notation.
QString lockHelpText();
