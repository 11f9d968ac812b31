#pragma once

#include <QString>

class QObject;

// Qt Quick's own accessibility (6.4) gets three things wrong for a vault: it hands the typed
// text of a password field to any accessibility client, it reports dimmed buttons as
// enabled, and it ignores a client's press on a button. From this call on, buttons and
// secret fields answer through interfaces of our own; every other item keeps Qt's. Safe to
// call more than once; the description is what the application says of itself.
void installAccessibility();
void setApplicationDescription(const QString& description);

// A text field whose typed text never leaves it: one declaring the property `secretEntry`,
// or a masked entry. A field is judged when a client first asks about it, which may be while
// it is still being built, before its echo mode is set: a masked field that names itself
// (`Accessible.name`) must declare `secretEntry` to be sure.
bool isSecretField(const QObject* object);
