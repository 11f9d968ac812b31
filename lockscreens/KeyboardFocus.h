#pragma once

#include <QObject>
#include <QtQml/qqmlregistration.h>

// Whether an item's keyboard focus came from the keyboard (Tab, Backtab, a shortcut), which is
// when its focus ring shows: what Qt Quick Controls call visual focus, for the plain items
// the first screens are built of. Attached: `KeyboardFocus.visible`.
class KeyboardFocus : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_ATTACHED(KeyboardFocus)
    QML_UNCREATABLE("KeyboardFocus is an attached property.")
    Q_PROPERTY(bool visible READ isVisible NOTIFY visibleChanged)

public:
    explicit KeyboardFocus(QObject* item);
    static KeyboardFocus* qmlAttachedProperties(QObject* item) { return new KeyboardFocus(item); }

    bool isVisible() const { return m_visible; }

signals:
    void visibleChanged();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool m_visible = false;
};
