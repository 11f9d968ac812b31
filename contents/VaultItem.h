#pragma once

#include <QDateTime>
#include <QMetaType>
#include <QString>
#include <QUrl>

#include <optional>

// One top-level entry of the mounted vault. Its identity is its URL.
struct VaultItem {
    QUrl url;
    QString name;
    std::optional<qint64> size; // bytes; none when it could not be measured
    QString kind;               // the type's description, "—" when there is none
    std::optional<QDateTime> dateAdded;

    bool operator==(const VaultItem&) const = default;
};

Q_DECLARE_METATYPE(VaultItem)
