#include "AccessibleControls.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickWindow>

namespace {

QString& applicationDescription() {
    static QString description;
    return description;
}

// The `Accessible` attached object QML made for the item, if any: it holds the name,
// description and role the screens give.
QObject* attachedAccessible(const QObject* item) {
    for (QObject* child : item->children()) {
        if (child->inherits("QQuickAccessibleAttached"))
            return child;
    }
    return nullptr;
}

bool isMasked(const QObject* field) {
    return field->property("echoMode").toInt() != 0; // anything but TextInput.Normal
}

// What a client may read of a secret field: a bullet per character where the screen shows
// bullets, and nothing where the screen shows the text itself.
QString exposed(const QObject* field, qsizetype length) {
    return isMasked(field) ? QString(length, QChar(0x2022)) : QString();
}

// A control without children of its own (a button, a text field), described from its item
// and its `Accessible` properties.
class LeafControl : public QAccessibleObject, public QAccessibleActionInterface {
public:
    explicit LeafControl(QQuickItem* item) : QAccessibleObject(item) {}

    QQuickItem* item() const { return static_cast<QQuickItem*>(object()); }

    QWindow* window() const override { return item()->window(); }
    QAccessibleInterface* parent() const override {
        // The nearest ancestor Qt describes, as Qt's own items find theirs.
        QQuickWindow* window = item()->window();
        for (QQuickItem* up = item()->parentItem(); up; up = up->parentItem()) {
            if (window && up == window->contentItem())
                return QAccessible::queryAccessibleInterface(window);
            if (QAccessibleInterface* found = QAccessible::queryAccessibleInterface(up))
                return found;
        }
        return nullptr;
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QRect rect() const override {
        if (!item()->window() || !item()->isVisible())
            return {};
        return QRect(item()->mapToGlobal(QPointF(0, 0)).toPoint(),
                     QSize(int(item()->width()), int(item()->height())));
    }

    QAccessible::Role role() const override {
        const QObject* attached = attachedAccessible(item());
        const int role = attached ? attached->property("role").toInt() : 0;
        return role != QAccessible::NoRole ? QAccessible::Role(role) : defaultRole();
    }
    QString text(QAccessible::Text t) const override {
        const QObject* attached = attachedAccessible(item());
        if (!attached)
            return {};
        if (t == QAccessible::Name)
            return attached->property("name").toString();
        if (t == QAccessible::Description)
            return attached->property("description").toString();
        return {};
    }
    void setText(QAccessible::Text, const QString&) override {}

    QAccessible::State state() const override {
        QAccessible::State state;
        const QQuickItem* it = item();
        state.disabled = !it->isEnabled();
        state.invisible = !it->window() || !it->window()->isVisible() || !it->isVisible() ||
                          qFuzzyIsNull(it->opacity());
        state.focusable = it->activeFocusOnTab();
        state.focused = it->hasActiveFocus();
        state.pressed = it->property("pressed").toBool();
        state.checkable = it->property("checkable").toBool();
        state.checked = it->property("checked").toBool();
        if (const QObject* attached = attachedAccessible(it))
            state.defaultButton = attached->property("defaultButton").toBool();
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType t) override {
        if (t == QAccessible::ActionInterface)
            return static_cast<QAccessibleActionInterface*>(this);
        return QAccessibleObject::interface_cast(t);
    }
    QStringList actionNames() const override { return {setFocusAction()}; }
    void doAction(const QString& name) override {
        if (name == setFocusAction() && item()->isEnabled())
            item()->forceActiveFocus(Qt::OtherFocusReason);
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

protected:
    virtual QAccessible::Role defaultRole() const = 0;
};

class ButtonControl : public LeafControl {
public:
    using LeafControl::LeafControl;

    QStringList actionNames() const override {
        return {pressAction(), setFocusAction()};
    }
    // A press from a screen reader is a click, refused like one while the button is dimmed.
    void doAction(const QString& name) override {
        if (name != pressAction())
            return LeafControl::doAction(name);
        if (!item()->isEnabled() || !item()->isVisible())
            return;
        if (item()->property("checkable").toBool())
            QMetaObject::invokeMethod(item(), "toggle");
        QMetaObject::invokeMethod(item(), "clicked");
    }

protected:
    QAccessible::Role defaultRole() const override { return QAccessible::Button; }
};

// An entry whose text clients never get; positions and selection are those of the mask.
class SecretField : public LeafControl, public QAccessibleTextInterface {
public:
    using LeafControl::LeafControl;

    QString text(QAccessible::Text t) const override {
        if (t == QAccessible::Value)
            return shown();
        const QString given = LeafControl::text(t);
        // Qt clears a masked field's name when accessibility starts; its placeholder,
        // shown where the text goes, names it then.
        if (t == QAccessible::Name && given.isEmpty())
            return item()->property("placeholderText").toString();
        return given;
    }
    QAccessible::State state() const override {
        QAccessible::State state = LeafControl::state();
        state.editable = true;
        state.passwordEdit = isMasked(item());
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType t) override {
        if (t == QAccessible::TextInterface)
            return static_cast<QAccessibleTextInterface*>(this);
        return LeafControl::interface_cast(t);
    }

    void selection(int index, int* start, int* end) const override {
        *start = index == 0 && isMasked(item()) ? item()->property("selectionStart").toInt() : 0;
        *end = index == 0 && isMasked(item()) ? item()->property("selectionEnd").toInt() : 0;
    }
    int selectionCount() const override {
        int start = 0;
        int end = 0;
        selection(0, &start, &end);
        return start != end ? 1 : 0;
    }
    void addSelection(int, int) override {}
    void removeSelection(int) override {}
    void setSelection(int, int, int) override {}
    int cursorPosition() const override {
        return isMasked(item()) ? item()->property("cursorPosition").toInt() : 0;
    }
    void setCursorPosition(int position) override {
        if (isMasked(item()))
            item()->setProperty("cursorPosition", position);
    }
    QString text(int start, int end) const override { return shown().mid(start, end - start); }
    int characterCount() const override { return int(shown().size()); }
    QRect characterRect(int) const override { return {}; }
    int offsetAtPoint(const QPoint&) const override { return -1; }
    void scrollToSubstring(int, int) override {}
    QString attributes(int offset, int* start, int* end) const override {
        *start = offset;
        *end = offset;
        return {};
    }

protected:
    QAccessible::Role defaultRole() const override { return QAccessible::EditableText; }

private:
    QString shown() const {
        return exposed(item(), item()->property("length").toInt());
    }
};

// The application object: its name is the one the desktop knows it by, and its description
// says nothing of where it was installed (Qt's default is the program's path).
class Application : public QAccessibleApplication {
public:
    QString text(QAccessible::Text t) const override {
        if (t == QAccessible::Description)
            return applicationDescription();
        if (t == QAccessible::Name)
            return QGuiApplication::applicationDisplayName();
        return QAccessibleApplication::text(t);
    }
};

QAccessibleInterface* controlFactory(const QString&, QObject* object) {
    if (object && object == QCoreApplication::instance())
        return new Application;
    auto* item = qobject_cast<QQuickItem*>(object);
    if (!item)
        return nullptr;
    if (isSecretField(item))
        return new SecretField(item);
    // Qt Quick Controls' buttons, and the plain ones of the first screens.
    if (item->inherits("QQuickButton") || item->property("pushButton").toBool())
        return new ButtonControl(item);
    return nullptr;
}

// Text change notices would carry what was typed: for a secret field they carry the mask,
// or nothing at all.
QAccessible::UpdateHandler g_nextHandler = nullptr;

void forward(QAccessibleEvent* event);

void filterTextEvents(QAccessibleEvent* event) {
    QObject* field = event->object();
    if (!field || !isSecretField(field))
        return forward(event);
    switch (event->type()) {
    case QAccessible::TextInserted: {
        const auto* insert = static_cast<QAccessibleTextInsertEvent*>(event);
        if (!isMasked(field))
            return;
        QAccessibleTextInsertEvent masked(field, insert->changePosition(),
                                          exposed(field, insert->textInserted().size()));
        return forward(&masked);
    }
    case QAccessible::TextRemoved: {
        const auto* remove = static_cast<QAccessibleTextRemoveEvent*>(event);
        if (!isMasked(field))
            return;
        QAccessibleTextRemoveEvent masked(field, remove->changePosition(),
                                          exposed(field, remove->textRemoved().size()));
        return forward(&masked);
    }
    case QAccessible::TextUpdated: {
        const auto* update = static_cast<QAccessibleTextUpdateEvent*>(event);
        if (!isMasked(field))
            return;
        QAccessibleTextUpdateEvent masked(field, update->changePosition(),
                                          exposed(field, update->textRemoved().size()),
                                          exposed(field, update->textInserted().size()));
        return forward(&masked);
    }
    default:
        return forward(event);
    }
}

void forward(QAccessibleEvent* event) {
    if (g_nextHandler)
        return g_nextHandler(event);
    // No handler before ours: hand the notice to the platform as if ours were not there.
    QAccessible::installUpdateHandler(nullptr);
    QAccessible::updateAccessibility(event);
    QAccessible::installUpdateHandler(filterTextEvents);
}

} // namespace

bool isSecretField(const QObject* object) {
    return object->inherits("QQuickTextInput") &&
           (isMasked(object) || object->property("secretEntry").toBool());
}

void installAccessibility() {
    static bool installed = false;
    if (installed)
        return;
    installed = true;
    // Qt Quick installs its own factory when it loads; a later one is asked first.
    QAccessible::installFactory(controlFactory);
    g_nextHandler = QAccessible::installUpdateHandler(filterTextEvents);
}

void setApplicationDescription(const QString& description) {
    applicationDescription() = description;
}
