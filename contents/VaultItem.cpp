#include "VaultItem.h"

QDateTime VaultItem::sortDate() const {
    static const QDateTime distantPast(QDate(1, 1, 1), QTime(0, 0), Qt::UTC);
    return dateAdded.value_or(distantPast);
}

size_t qHash(const VaultItem& item, size_t seed) {
    QtPrivate::QHashCombine combine;
    seed = combine(seed, item.url);
    seed = combine(seed, item.name);
    seed = item.size ? combine(combine(seed, 1), *item.size) : combine(seed, 0);
    seed = combine(seed, item.kind);
    seed = item.dateAdded ? combine(combine(seed, 1), *item.dateAdded) : combine(seed, 0);
    return seed;
}

QString pathExtension(const QString& name) {
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot <= 0 ? QString() : name.mid(dot + 1);
}

QString deletingPathExtension(const QString& name) {
    const QString extension = pathExtension(name);
    return extension.isEmpty() ? name : name.left(name.size() - extension.size() - 1);
}
