#include "ItemTableModel.h"

#include "BrowserTexts.h"

#include <QCollator>

#include <algorithm>

namespace {

// Names and kinds compare as people read them: by the locale's rules, numbers by value.
const QCollator& collator() {
    static const QCollator c = [] {
        QCollator made;
        made.setNumericMode(true);
        return made;
    }();
    return c;
}

const char* const kColumnTitles[] = {
    QT_TRANSLATE_NOOP("ItemTableModel", "Name"), QT_TRANSLATE_NOOP("ItemTableModel", "Size"),
    QT_TRANSLATE_NOOP("ItemTableModel", "Kind"), QT_TRANSLATE_NOOP("ItemTableModel", "Date Added")};

template <typename T> int threeWay(const T& a, const T& b) {
    return a < b ? -1 : (b < a ? 1 : 0);
}

} // namespace

ItemTableModel::ItemTableModel(QObject* parent) : QAbstractTableModel(parent) {}

void ItemTableModel::setVault(VaultManager* vault) {
    if (vault == m_vault)
        return;
    if (m_vault)
        disconnect(m_vault, nullptr, this, nullptr);
    m_vault = vault;
    if (vault)
        connect(vault, &VaultManager::itemsChanged, this, &ItemTableModel::reload);
    reload();
    emit vaultChanged();
}

void ItemTableModel::sortBy(int column) {
    if (column < 0 || column >= ColumnCount)
        return;
    if (m_sortOrder.first().column == column) {
        m_sortOrder.first().ascending = !m_sortOrder.first().ascending;
    } else {
        m_sortOrder.removeIf([column](const SortComparator& c) { return c.column == column; });
        m_sortOrder.prepend({column, true});
    }
    emit sortOrderChanged();
    reload();
}

int ItemTableModel::compareBy(int column, const VaultItem& a, const VaultItem& b) {
    switch (column) {
    case NameColumn:
        return collator().compare(a.sortName(), b.sortName());
    case SizeColumn:
        return threeWay(a.sortSize(), b.sortSize());
    case KindColumn:
        return collator().compare(a.kind, b.kind);
    case DateColumn:
        return threeWay(a.sortDate(), b.sortDate());
    }
    return 0;
}

QList<VaultItem> ItemTableModel::sortedItems(QList<VaultItem> items,
                                             const QList<SortComparator>& sortOrder) {
    std::stable_sort(items.begin(), items.end(),
                     [&sortOrder](const VaultItem& a, const VaultItem& b) {
                         for (const SortComparator& comparator : sortOrder) {
                             const int order = compareBy(comparator.column, a, b);
                             if (order != 0)
                                 return comparator.ascending ? order < 0 : order > 0;
                         }
                         return false;
                     });
    return items;
}

void ItemTableModel::reload() {
    QList<VaultItem> rows =
        sortedItems(m_vault ? m_vault->items() : QList<VaultItem>(), m_sortOrder);
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

int ItemTableModel::rowOf(const QUrl& url) const {
    for (int row = 0; row < m_rows.size(); ++row) {
        if (m_rows[row].url == url)
            return row;
    }
    return -1;
}

QUrl ItemTableModel::urlAt(int row) const {
    return row >= 0 && row < m_rows.size() ? m_rows[row].url : QUrl();
}

ItemTableModel::ColumnWidth ItemTableModel::columnWidthLimits(int column) {
    switch (column) {
    case NameColumn:
        return {160, 260, 0};
    case SizeColumn:
        return {60, 90, 140};
    case KindColumn:
        return {80, 150, 240};
    case DateColumn:
        return {120, 160, 220};
    }
    return {0, 0, 0};
}

QList<qreal> ItemTableModel::columnWidths(qreal available) {
    QList<qreal> widths;
    qreal total = 0;
    for (int column = 0; column < ColumnCount; ++column) {
        widths.append(columnWidthLimits(column).ideal);
        total += widths.last();
    }
    if (total < available) {
        // Room to spare: the columns grow in order, each up to its maximum.
        qreal spare = available - total;
        for (int column = 0; column < ColumnCount && spare > 0; ++column) {
            const ColumnWidth limits = columnWidthLimits(column);
            const qreal growth =
                limits.maximum > 0 ? std::min(spare, limits.maximum - limits.ideal) : spare;
            widths[column] += growth;
            spare -= growth;
        }
    } else if (total > available) {
        qreal room = 0;
        for (int column = 0; column < ColumnCount; ++column)
            room += widths[column] - columnWidthLimits(column).minimum;
        const qreal share = std::min(1.0, (total - available) / room);
        for (int column = 0; column < ColumnCount; ++column)
            widths[column] -= (widths[column] - columnWidthLimits(column).minimum) * share;
    }
    return widths;
}

qreal ItemTableModel::columnWidth(int column, qreal available) const {
    return columnWidths(available).value(column);
}

int ItemTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(m_rows.size());
}

int ItemTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ItemTableModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const VaultItem& item = m_rows[index.row()];
    switch (role) {
    case Qt::DisplayRole:
        switch (index.column()) {
        case NameColumn:
            return item.name;
        case SizeColumn:
            return byteCountText(item.size);
        case KindColumn:
            return item.kind;
        case DateColumn:
            return dateText(item.dateAdded);
        }
        return {};
    case UrlRole:
        return item.url;
    case PathRole:
        return item.url.toLocalFile();
    }
    return {};
}

QVariant ItemTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= ColumnCount)
        return {};
    return tr(kColumnTitles[section]);
}

QString ItemTableModel::columnKey(int column) {
    return column >= 0 && column < ColumnCount ? QString::fromLatin1(kColumnTitles[column])
                                               : QString();
}

QHash<int, QByteArray> ItemTableModel::roleNames() const {
    return {{Qt::DisplayRole, "display"}, {UrlRole, "url"}, {PathRole, "path"}};
}
