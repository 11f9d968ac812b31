#include "Accessibility.h"

#include "AppWindow.h"

#include <QAccessible>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSet>

namespace testsupport {

namespace {

// What a sighted user finds on screen: the controls Tab reaches, and the texts.
void collectShown(QQuickItem* item, QList<QQuickItem*>& focusable, QList<QQuickItem*>& texts) {
    if (!item->isVisible() || qFuzzyIsNull(item->opacity()))
        return;
    if (item->activeFocusOnTab())
        focusable.append(item);
    if (item->inherits("QQuickText") && !item->property("text").toString().trimmed().isEmpty())
        texts.append(item);
    for (QQuickItem* child : item->childItems())
        collectShown(child, focusable, texts);
}

QString describe(QObject* object) {
    if (!object)
        return QStringLiteral("?");
    if (!object->objectName().isEmpty())
        return object->objectName();
    auto* item = qobject_cast<QQuickItem*>(object);
    return item ? qmlTypeName(item) : QString::fromLatin1(object->metaObject()->className());
}

bool isSecretField(const QObject* object) {
    return object->property("echoMode").toInt() != 0 || object->property("secretEntry").toBool();
}

QString exposedText(QAccessibleInterface* element) {
    QString exposed = element->text(QAccessible::Name) + '\n' + element->text(QAccessible::Value) +
                      '\n' + element->text(QAccessible::Description);
    if (QAccessibleTextInterface* text = element->textInterface())
        exposed += '\n' + text->text(0, text->characterCount());
    return exposed;
}

} // namespace

void visitAccessible(QQuickWindow* window, const std::function<void(QAccessibleInterface*)>& visit) {
    QSet<const QObject*> seen;
    std::function<void(QAccessibleInterface*)> walk = [&](QAccessibleInterface* element) {
        if (!element || !element->isValid() || element->state().invisible || seen.contains(element->object()))
            return;
        seen.insert(element->object());
        visit(element);
        for (int i = 0; i < element->childCount(); ++i)
            walk(element->child(i));
    };
    walk(QAccessible::queryAccessibleInterface(window));
}

QStringList accessibilityProblems(QQuickWindow* window, const QStringList& secrets) {
    // As with a screen reader running: the controls fill in their roles and names.
    QAccessible::setActive(true);
    static const QList<QAccessible::Role> actedOn = {QAccessible::MenuItem, QAccessible::ColumnHeader,
                                                        QAccessible::Dialog};
    QStringList problems;
    QHash<const QObject*, QString> reached; // what a screen reader hears of each
    const auto checkNameAndRole = [&](QAccessibleInterface* element, const QString& what) {
        const QAccessible::Role role = element->role();
        if (role == QAccessible::NoRole || role == QAccessible::Pane || role == QAccessible::Client)
            problems << what + ": no role";
        if (element->text(QAccessible::Name).trimmed().isEmpty())
            problems << what + ": no name";
    };
    visitAccessible(window, [&](QAccessibleInterface* element) {
        QObject* object = element->object();
        const QString what = describe(object);
        const QString exposed = exposedText(element);
        reached.insert(object, exposed);
        for (const QString& secret : secrets) {
            if (exposed.contains(secret))
                problems << what + ": exposes a secret";
        }
        if (actedOn.contains(element->role()))
            checkNameAndRole(element, what);
        const QVariant checked = object ? object->property("checked") : QVariant();
        if (element->state().checkable && checked.isValid() && checked.toBool() != bool(element->state().checked))
            problems << what + ": reports the wrong check state";
    });

    QList<QQuickItem*> controls, texts;
    collectShown(window->contentItem(), controls, texts);
    // Each text is heard: as an element of its own, or in what the control it sits in says.
    for (QQuickItem* text : texts) {
        const QString shown = text->property("text").toString().trimmed();
        QQuickItem* up = text;
        while (up && !reached.value(up).contains(shown))
            up = up->parentItem();
        if (!up)
            problems << describe(text) + ": shows \"" + shown + "\" to no screen reader";
    }
    for (QQuickItem* item : controls) {
        const QString what = describe(item);
        QAccessibleInterface* element = QAccessible::queryAccessibleInterface(item);
        if (!element || !reached.contains(item)) {
            problems << what + ": not in the accessibility tree";
            continue;
        }
        checkNameAndRole(element, what);
        if (element->state().disabled == item->isEnabled())
            problems << what + (item->isEnabled() ? ": reported dimmed" : ": reported enabled");
        const QString typed = item->property("text").toString();
        if (isSecretField(item) && !typed.isEmpty() && exposedText(element).contains(typed))
            problems << what + ": hands out what was typed";
    }
    return problems;
}

} // namespace testsupport
