// Moving an item into the vault: checks first, then copy, then removal of the original, and
// the bookkeeping last, so that a failure at any step leaves the item where it was.

#include "OriginsRegistry.h"
#include "engine/VaultManager.h"
#include "platform/Files.h"
#include "platform/Process.h"
#include "platform/ToolLocation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

std::string local(const QString& path) { return QFile::encodeName(path).toStdString(); }

// The path of an item with its folders resolved but not the item itself: a link is the
// item, not what it points to.
QString resolvedItemPath(const QString& path) {
    const QFileInfo info(path);
    const QString folder = QFileInfo(info.path()).canonicalFilePath();
    return folder.isEmpty() ? QDir::cleanPath(path) : QDir(folder).filePath(info.fileName());
}

bool isSameOrInside(const QString& path, const QString& folder) {
    if (folder.isEmpty())
        return false;
    return path == folder || path.startsWith(folder.endsWith('/') ? folder : folder + '/');
}

int runCommand(const QStringList& command) {
    std::vector<std::string> args;
    for (qsizetype i = 1; i < command.size(); ++i)
        args.push_back(local(command[i]));
    return platform::runProcess(local(command.first()), args, std::nullopt).status;
}

QStringList elevatedRemovalCommand(const QString& path) {
#ifdef Q_OS_MACOS
    return {QStringLiteral("/usr/bin/osascript"), QStringLiteral("-e"),
            QStringLiteral("on run argv"), QStringLiteral("-e"),
            QStringLiteral("do shell script \"/bin/rm -rf \" & quoted form of (item 1 of argv) "
                           "with administrator privileges with prompt \"Morvanta needs your "
                           "permission to move this app into the vault.\""),
            QStringLiteral("-e"), QStringLiteral("end run"), path};
#else
    // pkexec shows the prompt of Morvanta's polkit action for this helper, and hands the
    // path over as an argument: no shell ever sees it.
    return {QStringLiteral("/usr/bin/pkexec"),
            QString::fromStdString(platform::executableDirectory() + "/morvanta-remove-original"),
            path};
#endif
}

} // namespace

void VaultManager::setElevationRunner(CommandRunner runner) {
    m_elevationRunner = std::move(runner);
}

void VaultManager::setFileLayer(std::shared_ptr<platform::FileLayer> files) {
    m_files = std::move(files);
}

// Adding the vault's own folder, anything that contains it, or anything from inside the
// open vault would copy the vault into itself and then delete it.
bool VaultManager::touchesTheVault(const QString& path) const {
    const QString item = resolvedItemPath(path);
    for (const QString& guarded : {QDir(m_supportDir).canonicalPath(), QDir(vaultRoot()).canonicalPath()}) {
        if (isSameOrInside(item, guarded) || isSameOrInside(guarded, item))
            return true;
    }
    return false;
}

void VaultManager::addItem(const QUrl& url) {
    requireMounted();
    const QString name = url.fileName();
    const QString source = url.toLocalFile();
    if (QDir::cleanPath(source).startsWith(QStringLiteral("/System/")) || touchesTheVault(source))
        throw VaultError::cannotMoveSource(name);

    const QString destination = vaultRoot() + QLatin1Char('/') + name;
    if (name == kOriginsRegistryName || name == kOriginsDraftName || platform::existsNoFollow(local(destination)))
        throw VaultError::ioFailed(QStringLiteral("Item with same name already in vault."));

    // The vault copy is complete and on stable storage (the volume, and the file system that
    // holds the image) before the original goes: a power cut at any moment leaves at least
    // one whole copy.
    platform::FileError error = m_files->copyTree(local(source), local(destination));
    if (!error)
        error = m_files->flush(local(destination));
    if (!error)
        error = m_files->flush(local(bundlePath()));
    if (error) {
        m_files->removeTree(local(destination));
        throw VaultError::ioFailed(QString::fromStdString(*error));
    }
    try {
        removeOriginal(url);
    } catch (const VaultError&) {
        // The original stays; so must nothing of it in the vault.
        m_files->removeTree(local(destination));
        throw;
    }
    setOrigin(source, name);
    refreshItems();
}

void VaultManager::removeOriginal(const QUrl& url) {
    const std::string path = local(url.toLocalFile());
    // A plain removal that would stop half-way is not begun: it would destroy part of the
    // original before the administrator is even asked.
    if (platform::canRemoveTree(path) && !m_files->removeTree(path))
        return;
    const CommandRunner& run = m_elevationRunner ? m_elevationRunner : CommandRunner(runCommand);
    const int status = run(elevatedRemovalCommand(url.toLocalFile()));
    if (status != 0 || platform::existsNoFollow(path))
        throw VaultError::cannotRemoveSource(url.fileName());
}
