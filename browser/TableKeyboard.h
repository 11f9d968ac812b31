#pragma once

#include "ItemTableModel.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

// What keys do on the item table, as in a file manager's list: arrows, Home, End and the
// page keys move the selection; Return, F2, Delete and the menu keys act on the selected
// item; typing the first letters of a name jumps to it.
class TableKeyboard : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(ItemTableModel* model READ model WRITE setModel NOTIFY modelChanged)

public:
    explicit TableKeyboard(QObject* parent = nullptr);

    ItemTableModel* model() const { return m_model; }
    void setModel(ItemTableModel* model);

    // The row a movement key takes the selection to from `row` (-1 when none is selected),
    // `pageRows` rows making a page; -1 for any other key and for an empty table.
    Q_INVOKABLE int rowAfterKey(int key, int row, int pageRows) const;
    // The row-menu action a key stands for ("open", "rename", "delete"), "menu" for the
    // row menu itself, or nothing.
    Q_INVOKABLE static QString commandForKey(int key, int modifiers);
    // Type-ahead: `text` was typed with `row` selected. Letters typed in quick succession,
    // with nothing else moving the selection between them, make one prefix; the same
    // letter again goes on to the next name starting with it.
    // The row of the name found (searching on from the selection, round the end), or -1.
    Q_INVOKABLE int rowForTyped(const QString& text, int row);

signals:
    void modelChanged();

private:
    int firstMatch(const QString& prefix, int from) const;

    QPointer<ItemTableModel> m_model;
    QString m_typed;
    QElapsedTimer m_sinceTyped;
    int m_lastFound = -1;
};
