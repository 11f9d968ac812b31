// The origins registry: a small JSON object at the vault's root that maps each item's name
// to the full path it was taken from. Advisory: a damaged file reads as empty.

#include "OriginsRegistry.h"
#include "engine/VaultManager.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>

namespace {

// Written whole beside the registry and renamed over it, so that a crash part-way leaves the
// previous registry rather than a truncated one.
void replaceFile(const QString& path, const QString& draftPath, const QByteArray& bytes) {
    const QByteArray draft = QFile::encodeName(draftPath);
    const int fd = ::open(draft.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return;
    const bool written = ::write(fd, bytes.constData(), std::size_t(bytes.size())) == bytes.size() &&
                         ::fsync(fd) == 0;
    if (::close(fd) == 0 && written &&
        std::rename(draft.constData(), QFile::encodeName(path).constData()) == 0)
        return;
    ::unlink(draft.constData());
}

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
    replaceFile(vaultRoot() + QLatin1Char('/') + kOriginsRegistryName,
                vaultRoot() + QLatin1Char('/') + kOriginsDraftName,
                QJsonDocument(object).toJson(QJsonDocument::Compact));
}

void VaultManager::removeRegistryDraft() {
    QFile::remove(vaultRoot() + QLatin1Char('/') + kOriginsDraftName);
}

std::optional<QString> VaultManager::restoreFolder(const QUrl& url) const {
    const QMap<QString, QString> origins = loadOrigins();
    const auto origin = origins.constFind(url.fileName());
    if (origin == origins.cend())
        return std::nullopt;
    return parentFolder(*origin);
}
