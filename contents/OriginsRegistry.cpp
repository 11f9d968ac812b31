// The origins registry: a small JSON object at the vault's root that maps each item's name
// to the full path it was taken from. Advisory: a damaged file reads as empty.

#include "OriginsRegistry.h"
#include "engine/VaultManager.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <filesystem>

namespace {

QString parentFolder(const QString& path) {
    return QFile::decodeName(
        std::filesystem::path(QFile::encodeName(path).toStdString()).parent_path().c_str());
}

} // namespace

QMap<QString, QString> VaultManager::loadOrigins() const {
    QMap<QString, QString> origins;
    if (m_mountPoint.isEmpty())
        return origins;
    QFile file(vaultRoot() + QLatin1Char('/') + kOriginsRegistryName);
    if (!file.open(QIODevice::ReadOnly))
        return origins;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return origins;
    const QJsonObject object = document.object();
    for (auto it = object.begin(); it != object.end(); ++it) {
        // One value that is not text makes the whole file unreadable.
        if (!it.value().isString())
            return {};
        origins.insert(it.key(), it.value().toString());
    }
    return origins;
}

void VaultManager::setOrigin(const std::optional<QString>& path, const QString& name) {
    QMap<QString, QString> origins = loadOrigins();
    if (path)
        origins.insert(name, *path);
    else
        origins.remove(name);
    if (m_mountPoint.isEmpty())
        return;

    QJsonObject object;
    for (auto it = origins.cbegin(); it != origins.cend(); ++it)
        object.insert(it.key(), it.value());
    // Written whole to a temporary file and renamed into place, so that a crash part-way
    // leaves the previous registry rather than a truncated one.
    QSaveFile file(vaultRoot() + QLatin1Char('/') + kOriginsRegistryName);
    if (file.open(QIODevice::WriteOnly)) {
        file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
        file.write(QJsonDocument(object).toJson(QJsonDocument::Compact));
        file.commit();
    }
}

std::optional<QString> VaultManager::restoreFolder(const QUrl& url) const {
    const QMap<QString, QString> origins = loadOrigins();
    const auto origin = origins.constFind(url.fileName());
    if (origin == origins.cend())
        return std::nullopt;
    return parentFolder(*origin);
}
