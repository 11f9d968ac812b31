#pragma once

#include <QStringList>

#include <functional>

class QAccessibleInterface;
class QQuickWindow;

namespace testsupport {

// Visits every element a screen reader can reach in `window` (hidden ones skipped).
void visitAccessible(QQuickWindow* window, const std::function<void(QAccessibleInterface*)>& visit);

// What a screen-reader user would run into in the window as it is now, one line per fault:
// a control (focusable, or a menu entry or column header) that the tree does not reach or
// that has no name or role; a dimmed control reported enabled, or the reverse; a checkable
// control whose state differs from what it shows; a secret field (masked, or declaring
// `secretEntry`) whose typed text a client can read; and any of `secrets` readable anywhere.
QStringList accessibilityProblems(QQuickWindow* window, const QStringList& secrets = {});

} // namespace testsupport
