#include "ReturnPressesButtons.h"

#include <QKeyEvent>
#include <QQuickItem>
#include <QQuickWindow>

namespace {

class ReturnPressesButtons : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::KeyPress)
            return false;
        const auto* key = static_cast<QKeyEvent*>(event);
        if ((key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter) ||
            (key->modifiers() & ~Qt::KeypadModifier) || key->isAutoRepeat())
            return false;
        // Buttons only: a menu item, a field or the table does its own thing with Return.
        QQuickItem* focused = static_cast<QQuickWindow*>(watched)->activeFocusItem();
        if (!focused || !focused->inherits("QQuickButton") || !focused->isEnabled())
            return false;
        QMetaObject::invokeMethod(focused, "clicked");
        return true;
    }
};

} // namespace

void letReturnPressButtons(QQuickWindow* window) {
    window->installEventFilter(new ReturnPressesButtons(window));
}
