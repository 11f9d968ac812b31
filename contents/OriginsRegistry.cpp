// The origins registry: a small JSON object at the vault's root that maps each item's name
// to the full path it was taken from. Advisory: a damaged file reads as empty.

#include "OriginsRegistry.h"
#include "engine/VaultManager.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>

namespace {

// Written whole beside the registry and renamed over it, so that a crash part-way leaves the
// previous registry rather than a truncated one. The draft is made new, never through
// whatever may have been planted at its name.
platform::FileError replaceFile(const QString& path, const QString& draftPath, const QByteArray& bytes) {
    const QByteArray draft = QFile::encodeName(draftPath);
    ::unlink(draft.constData());
    const int fd = ::open(draft.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0)
        return std::string(std::strerror(errno));
    const bool written = ::write(fd, bytes.constData(), std::size_t(bytes.size())) == bytes.size() &&
                         ::fsync(fd) == 0;
    const int writeError = errno;
    if (::close(fd) == 0 && written &&
        std::rename(draft.constData(), QFile::encodeName(path).constData()) == 0)
        return std::nullopt;
    const int error = written ? errno : writeError;
    ::unlink(draft.constData());
    return std::string(std::strerror(error ? error : EIO));
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
    const platform::FileError error =
        replaceFile(vaultRoot() + QLatin1Char('/') + kOriginsRegistryName,
                    vaultRoot() + QLatin1Char('/') + kOriginsDraftName,
                    QJsonDocument(object).toJson(QJsonDocument::Compact));
    if (error) {
        throw VaultError::ioFailed(tr("Couldn\u2019t record where items came from: %1.")
                                       .arg(QString::fromStdString(*error)));
    }
}

// What a crash can leave at the vault's root: a registry draft, and copies that never got
// their name (their originals were not touched).
void VaultManager::removeUnfinishedWork() {
    const QDir root(vaultRoot());
    for (const QString& name : root.entryList(QDir::AllEntries | QDir::Hidden | QDir::System)) {
        if (name == kOriginsDraftName || name.startsWith(kStagingPrefix))
            m_files->erase(QFile::encodeName(root.filePath(name)).toStdString());
    }
}

std::optional<QString> VaultManager::restoreFolder(const QUrl& url) const {
    const QMap<QString, QString> origins = loadOrigins();
    const auto origin = origins.constFind(url.fileName());
    if (origin == origins.cend())
        return std::nullopt;
    return parentFolder(*origin);
}
