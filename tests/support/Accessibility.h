#pragma once

#include <QAccessible>
#include <QQuickWindow>
#include <QStringList>

#include <functional>

namespace testsupport {

// Accessibility switched on as a screen reader switches it on, with nobody listening.
inline void enableAccessibility() {
    QAccessible::installUpdateHandler([](QAccessibleEvent*) {});
    QAccessible::setActive(true);
}

// Visits every element a screen reader can reach in `window` (hidden ones skipped).
inline void visitAccessible(QQuickWindow* window,
                            const std::function<void(QAccessibleInterface*)>& visit) {
    std::function<void(QAccessibleInterface*)> walk = [&](QAccessibleInterface* element) {
        if (!element || !element->isValid() || element->state().invisible)
            return;
        visit(element);
        for (int i = 0; i < element->childCount(); ++i)
            walk(element->child(i));
    };
    walk(QAccessible::queryAccessibleInterface(window));
}

// The element for an object, found by its object name.
inline QAccessibleInterface* accessibleNamed(QQuickWindow* window, const QString& objectName) {
    QAccessibleInterface* found = nullptr;
    visitAccessible(window, [&](QAccessibleInterface* element) {
        if (element->object() && element->object()->objectName() == objectName)
            found = element;
    });
    return found;
}

// What a screen reader would trip over in `window` as it stands: an element a person acts on
// (a control, a menu entry, a column header, anything focusable) without a name or a role, a
// checkable control whose state differs from what it shows, and any of `secrets` readable as
// a name, value or text. (Qt Quick 6.4 reports no control disabled, so that goes unchecked.)
inline QStringList accessibilityProblems(QQuickWindow* window, const QStringList& secrets = {}) {
    static const QList<QAccessible::Role> controls = {
        QAccessible::Button,      QAccessible::CheckBox,     QAccessible::RadioButton,
        QAccessible::MenuItem,    QAccessible::EditableText, QAccessible::ComboBox,
        QAccessible::ColumnHeader, QAccessible::Link,        QAccessible::PageTab};
    QStringList problems;
    visitAccessible(window, [&](QAccessibleInterface* element) {
        QObject* object = element->object();
        const QString what = QStringLiteral("%1 \"%2\"").arg(
            object ? object->metaObject()->className() : "?",
            object ? object->objectName() : QString());
        const QAccessible::State state = element->state();
        const QAccessible::Role role = element->role();
        QStringList texts = {element->text(QAccessible::Name), element->text(QAccessible::Value),
                             element->text(QAccessible::Description)};
        if (QAccessibleTextInterface* text = element->textInterface())
            texts.append(text->text(0, text->characterCount()));
        for (const QString& secret : secrets) {
            if (texts.join('\n').contains(secret))
                problems.append(what + " exposes a secret");
        }
        const bool acts = controls.contains(role) || (state.focusable && role != QAccessible::StaticText);
        if (!acts)
            return;
        if (role == QAccessible::NoRole || role == QAccessible::Client ||
            role == QAccessible::Pane)
            problems.append(what + " has no role");
        if (element->text(QAccessible::Name).trimmed().isEmpty())
            problems.append(what + " has no name");
        const QVariant checked = object ? object->property("checked") : QVariant();
        if (state.checkable && checked.isValid() && checked.toBool() != bool(state.checked))
            problems.append(what + " reports the wrong check state");
    });
    return problems;
}

} // namespace testsupport
