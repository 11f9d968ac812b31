#pragma once

#include <QStringList>

class QQuickWindow;

namespace testsupport {

// What a screen-reader user would run into in the window as it is now, one line per fault: a
// focusable control that the accessibility tree does not reach or that has no name or role;
// a dimmed control reported enabled, or the reverse; a secret field (masked, or named in
// `secretFields`) whose typed text a client can read.
QStringList accessibilityProblems(QQuickWindow* window, const QStringList& secretFields = {});

} // namespace testsupport
