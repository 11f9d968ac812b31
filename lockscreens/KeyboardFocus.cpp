#include "KeyboardFocus.h"

#include <QFocusEvent>
#include <QKeyEvent>

KeyboardFocus::KeyboardFocus(QObject* item) : QObject(item) { item->installEventFilter(this); }

bool KeyboardFocus::eventFilter(QObject*, QEvent* event) {
    bool visible = m_visible;
    if (event->type() == QEvent::FocusIn) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        visible = reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
                  reason == Qt::ShortcutFocusReason;
    } else if (event->type() == QEvent::KeyPress) {
        // Tab where nothing else takes the focus leaves it here, with no new focus event:
        // the ring still answers the key.
        const int key = static_cast<QKeyEvent*>(event)->key();
        visible = visible || key == Qt::Key_Tab || key == Qt::Key_Backtab;
    } else if (event->type() == QEvent::FocusOut) {
        visible = false;
    }
    if (visible != m_visible) {
        m_visible = visible;
        emit visibleChanged();
    }
    return false;
}
