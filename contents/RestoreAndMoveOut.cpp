// Taking items out of the vault again: back to where they came from, or to a chosen folder.

#include "engine/VaultManager.h"
#include "platform/Files.h"

#include <QFile>

#include <filesystem>

namespace {

std::string local(const QString& path) { return QFile::encodeName(path).toStdString(); }

} // namespace

void VaultManager::restoreItem(const QUrl& url) {
    requireMounted();
    const QMap<QString, QString> origins = loadOrigins();
    const QString name = url.fileName();
    const auto origin = origins.constFind(name);
    if (origin == origins.cend())
        throw VaultError::ioFailed(QStringLiteral("Original location is unknown for this item."));

    // The item goes back under the name it had outside, even if renamed in the vault since.
    const std::filesystem::path original(local(*origin));
    const QString folder = QFile::decodeName(original.parent_path().c_str());
    const QString target = QFile::decodeName((original.parent_path() / original.filename()).c_str());
    if (!platform::existsNoFollow(local(folder)))
        throw VaultError::ioFailed(QStringLiteral("Original folder no longer exists:\n") + folder);
    if (platform::existsNoFollow(local(target))) {
        throw VaultError::ioFailed(
            QStringLiteral("Something already exists at the original location:\n") + target);
    }
    if (const platform::FileError error = m_files->moveItem(local(url.toLocalFile()), local(target)))
        throw VaultError::ioFailed(QString::fromStdString(*error));
    setOrigin(std::nullopt, name);
    refreshItems();
}

// Works on the URLs it is given: the browser offers only vault items, and a folder chosen
// outside the vault.
void VaultManager::removeItem(const QUrl& url, const QUrl& folder) {
    const QString name = url.fileName();
    const QString target = folder.toLocalFile() + QLatin1Char('/') + name;
    if (platform::existsNoFollow(local(target)))
        throw VaultError::ioFailed(QStringLiteral("File with same name exists at destination."));
    if (const platform::FileError error = m_files->moveItem(local(url.toLocalFile()), local(target)))
        throw VaultError::ioFailed(QString::fromStdString(*error));
    setOrigin(std::nullopt, name);
    refreshItems();
}
