#pragma once

#include <QDateTime>
#include <QHashFunctions>
#include <QMetaType>
#include <QString>
#include <QUrl>

#include <optional>

// One top-level entry of the mounted vault. Its identity is its URL; equality compares all
// five fields.
struct VaultItem {
    QUrl url;
    QString name;               // the last path component, exactly as on disk
    std::optional<qint64> size; // bytes of content; none when it could not be measured
    QString kind;               // the type's description, "—" when there is none
    std::optional<QDateTime> dateAdded;

    const QUrl& id() const { return url; }

    // Sort keys: unmeasured items sort below empty files, undated ones as the oldest.
    QString sortName() const { return name.toLower(); }
    qint64 sortSize() const { return size.value_or(-1); }
    QDateTime sortDate() const;

    bool operator==(const VaultItem&) const = default;
};

size_t qHash(const VaultItem& item, size_t seed = 0);

// The text after the last dot of a file name; none for names without one and for names that
// only start with one (".notes"). Renaming keeps it, and the rename prompt names it.
QString pathExtension(const QString& name);
// The name without that extension and its dot.
QString deletingPathExtension(const QString& name);

Q_DECLARE_METATYPE(VaultItem)
