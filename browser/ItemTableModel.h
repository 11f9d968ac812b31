#pragma once

#include "engine/VaultManager.h"

#include <QAbstractTableModel>
#include <QList>
#include <QPointer>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

// The vault's items as the browser's table shows them: four columns, sorted by the item's
// sort keys (never by the texts shown), by the comparators of `sortOrder` in turn.
class ItemTableModel : public QAbstractTableModel {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(VaultManager* vault READ vault WRITE setVault NOTIFY vaultChanged)
    Q_PROPERTY(int sortColumn READ sortColumn NOTIFY sortOrderChanged)
    Q_PROPERTY(bool sortAscending READ sortAscending NOTIFY sortOrderChanged)

public:
    enum Column { NameColumn, SizeColumn, KindColumn, DateColumn, ColumnCount };
    Q_ENUM(Column)
    enum Role { UrlRole = Qt::UserRole + 1, PathRole };

    // One comparator: a column's sort key, in one direction.
    struct SortComparator {
        int column;
        bool ascending;
        bool operator==(const SortComparator&) const = default;
    };

    // A column's width limits in points; no maximum is 0.
    struct ColumnWidth {
        qreal minimum;
        qreal ideal;
        qreal maximum;
    };

    explicit ItemTableModel(QObject* parent = nullptr);

    VaultManager* vault() const { return m_vault; }
    void setVault(VaultManager* vault);

    const QList<SortComparator>& sortOrder() const { return m_sortOrder; }
    int sortColumn() const { return m_sortOrder.first().column; }
    bool sortAscending() const { return m_sortOrder.first().ascending; }
    // A header click: a column already sorting first flips its direction; any other column
    // becomes the first comparator, ascending, and the earlier ones break its ties.
    Q_INVOKABLE void sortBy(int column);

    // The items in the order shown.
    const QList<VaultItem>& rows() const { return m_rows; }
    // `items` ordered by the comparators in turn; items equal under all of them keep their
    // order.
    static QList<VaultItem> sortedItems(QList<VaultItem> items,
                                        const QList<SortComparator>& sortOrder);
    Q_INVOKABLE int rowOf(const QUrl& url) const;
    Q_INVOKABLE QUrl urlAt(int row) const;

    static ColumnWidth columnWidthLimits(int column);
    // Each column's width for a table `available` points wide: the ideal widths, the room
    // left over going to the columns that may grow, and a table too narrow taking from
    // each column's room above its minimum alike; never below the minimums (the table then
    // scrolls).
    static QList<qreal> columnWidths(qreal available);
    Q_INVOKABLE qreal columnWidth(int column, qreal available) const;
    // A column's title in English whatever the language shown, for naming its header.
    Q_INVOKABLE static QString columnKey(int column);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

signals:
    void vaultChanged();
    void sortOrderChanged();

private:
    void reload();
    // Negative, zero or positive, as `a` sorts before, with or after `b` by one column's key.
    static int compareBy(int column, const VaultItem& a, const VaultItem& b);

    QPointer<VaultManager> m_vault;
    QList<SortComparator> m_sortOrder{{NameColumn, true}};
    QList<VaultItem> m_rows;
};
