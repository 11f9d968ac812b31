// Renaming an item (its extension is kept) and erasing one for good.

#include "OriginsRegistry.h"
#include "engine/VaultManager.h"
#include "platform/Files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

std::string local(const QString& path) { return QFile::encodeName(path).toStdString(); }

} // namespace

void VaultManager::renameItem(const QUrl& url, const QString& newName) {
    requireMounted();
    const QString oldName = url.fileName();
    const QString extension = pathExtension(oldName);
    QString base = newName.trimmed();
    // Whatever extension was typed gives way to the item's own.
    if (!extension.isEmpty())
        base = deletingPathExtension(base);
    if (base.isEmpty() || base.contains(QLatin1Char('/')) || base == QStringLiteral(".") ||
        base == QStringLiteral(".."))
        throw VaultError::ioFailed(tr("Enter a valid name (no \u201C/\u201D)."));

    const QString finalName = extension.isEmpty() ? base : base + QLatin1Char('.') + extension;
    if (finalName == oldName)
        return;
    const QString destination = vaultRoot() + QLatin1Char('/') + finalName;
    if (isReservedName(finalName)) {
        throw VaultError::ioFailed(tr("\u201C%1\u201D is a name the vault keeps for itself. Choose "
                                      "another name.")
                                       .arg(finalName));
    }
    if (platform::existsNoFollow(local(destination))) {
        throw VaultError::ioFailed(
            tr("An item named \u201C%1\u201D is already in the vault.").arg(finalName));
    }
    if (const platform::FileError error = m_files->rename(local(url.toLocalFile()), local(destination)))
        throw VaultError::ioFailed(QString::fromStdString(*error));

    // The item has its new name now, whatever happens to the registry: the list must say so.
    struct Refresh {
        VaultManager* vault;
        ~Refresh() { vault->refreshItems(); }
    } refresh{this};
    const QMap<QString, QString> origins = loadOrigins();
    const std::optional<QString> origin =
        origins.contains(oldName) ? std::optional<QString>(origins.value(oldName)) : std::nullopt;
    setOrigin(std::nullopt, oldName);
    // Always written: without an origin it clears a stale one left under the new name.
    setOrigin(origin, finalName);
}

void VaultManager::deleteItem(const QUrl& url) {
    requireMounted();
    const QString path = QDir::cleanPath(url.toLocalFile());
    if (QDir::cleanPath(QFileInfo(path).path()) != QDir::cleanPath(vaultRoot()))
        throw VaultError::ioFailed(tr("Item is not inside the vault."));
    // Counted first, for the progress strip. A lock stops a large deletion part-way: what is
    // left stays listed, and can be deleted again.
    const platform::TreeTotals totals = platform::countTree(local(path));
    const platform::CopyObserver observer = progressObserver(url.fileName(), totals.bytes, totals.entries);
    if (const platform::FileError error = m_files->erase(local(path), observer)) {
        refreshItems();
        throw VaultError::ioFailed(QString::fromStdString(*error));
    }
    setOrigin(std::nullopt, url.fileName());
    refreshItems();
}
