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
        throw VaultError::ioFailed(tr("Original location is unknown for this item."));

    // The item goes back under the name it had outside, even if renamed in the vault since.
    const std::filesystem::path original(local(*origin));
    const QString folder = QFile::decodeName(original.parent_path().c_str());
    const QString target = QFile::decodeName((original.parent_path() / original.filename()).c_str());
    if (!platform::existsNoFollow(local(folder)))
        throw VaultError::ioFailed(tr("Original folder no longer exists:\n%1").arg(folder));
    if (platform::existsNoFollow(local(target))) {
        throw VaultError::ioFailed(
            tr("Something already exists at the original location:\n%1").arg(target));
    }
    moveOut(url, target);
}

// Works on the URLs it is given: the browser offers only vault items, and a folder chosen
// outside the vault.
void VaultManager::removeItem(const QUrl& url, const QUrl& folder) {
    const QString name = url.fileName();
    const QString target = folder.toLocalFile() + QLatin1Char('/') + name;
    if (platform::existsNoFollow(local(target)))
        throw VaultError::ioFailed(tr("File with same name exists at destination."));
    moveOut(url, target);
}

// Both ways out: a whole copy at `target` first, then the origin forgotten, then the vault's
// copy removed, entry by entry as it was copied.
void VaultManager::moveOut(const QUrl& url, const QString& target) {
    const QString item = url.toLocalFile();
    const platform::TreeSurvey survey = surveyItem(item);
    stageCopy(item, target, survey);
    try {
        setOrigin(std::nullopt, url.fileName());
    } catch (const VaultError&) {
        m_files->erase(local(target));
        throw;
    }
    m_files->remove(local(item), survey, true);
    refreshItems();
    if (platform::existsNoFollow(local(item)))
        throw VaultError::ioFailed(leftBehindMessage(url.fileName(), item));
}
