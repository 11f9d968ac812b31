#include "Accessibility.h"

#include "AppWindow.h"

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSet>

namespace testsupport {

namespace {

void collectReached(QAccessibleInterface* iface, QSet<const QObject*>& reached) {
    if (!iface || reached.contains(iface->object()))
        return;
    reached.insert(iface->object());
    for (int i = 0; i < iface->childCount(); ++i)
        collectReached(iface->child(i), reached);
}

void collectFocusable(QQuickItem* item, QList<QQuickItem*>& found) {
    if (!item->isVisible() || qFuzzyIsNull(item->opacity()))
        return;
    if (item->activeFocusOnTab())
        found.append(item);
    for (QQuickItem* child : item->childItems())
        collectFocusable(child, found);
}

} // namespace

QStringList accessibilityProblems(QQuickWindow* window, const QStringList& secretFields) {
    // As with a screen reader running: the controls fill in their roles and names.
    QAccessible::setActive(true);
    QSet<const QObject*> reached;
    collectReached(QAccessible::queryAccessibleInterface(window), reached);
    QList<QQuickItem*> controls;
    collectFocusable(window->contentItem(), controls);

    QStringList problems;
    for (QQuickItem* item : controls) {
        const QString name = item->objectName().isEmpty() ? qmlTypeName(item) : item->objectName();
        QAccessibleInterface* iface = QAccessible::queryAccessibleInterface(item);
        if (!iface || !reached.contains(item)) {
            problems << name + ": not in the accessibility tree";
            continue;
        }
        const QAccessible::Role role = iface->role();
        if (role == QAccessible::NoRole || role == QAccessible::Pane || role == QAccessible::Client)
            problems << name + ": no role";
        if (iface->text(QAccessible::Name).trimmed().isEmpty())
            problems << name + ": no name";
        if (iface->state().disabled == item->isEnabled())
            problems << name + (item->isEnabled() ? ": reported dimmed" : ": reported enabled");

        const QString typed = item->property("text").toString();
        const bool secret = item->property("echoMode").toInt() != 0 ||
                            secretFields.contains(item->objectName());
        if (!secret || typed.isEmpty())
            continue;
        QString exposed = iface->text(QAccessible::Value);
        if (QAccessibleTextInterface* text = iface->textInterface())
            exposed += text->text(0, text->characterCount());
        if (exposed.contains(typed))
            problems << name + ": hands out what was typed";
    }
    return problems;
}

} // namespace testsupport
