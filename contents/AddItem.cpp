// Moving an item into the vault: checks first, then copy, then removal of the original, and
// the bookkeeping last, so that a failure at any step leaves the item where it was.

#include "OriginsRegistry.h"
#include "engine/VaultManager.h"
#include "platform/DesktopTraces.h"
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

int runCommand(const QStringList& command, const QByteArray& input) {
    std::vector<std::string> args;
    for (qsizetype i = 1; i < command.size(); ++i)
        args.push_back(local(command[i]));
    return platform::runProcess(local(command.first()), args,
                                std::string_view(input.constData(), std::size_t(input.size())))
        .status;
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
            QString::fromStdString(platform::helperProgramPath("morvanta-remove-original")),
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
    const QString resolved = resolvedItemPath(source);
    if (platform::isProtectedSystemPath(local(resolved), local(QDir::homePath())) ||
        touchesTheVault(source))
        throw VaultError::cannotMoveSource(name);
    if (isReservedName(name)) {
        throw VaultError::ioFailed(tr("\u201C%1\u201D is a name the vault keeps for itself. Rename "
                                      "the item, then add it.")
                                       .arg(name));
    }
    const QString destination = vaultRoot() + QLatin1Char('/') + name;
    if (platform::existsNoFollow(local(destination)))
        throw VaultError::ioFailed(tr("Item with same name already in vault."));

    const platform::TreeSurvey survey = surveyItem(source);
    stageCopy(source, destination, survey);
    // Recorded before the original goes: an item in the vault always knows its way back.
    try {
        setOrigin(source, name);
    } catch (const VaultError&) {
        m_files->erase(local(destination));
        throw;
    }
    removeOriginal(url, survey);
    refreshItems();
}

void VaultManager::removeOriginal(const QUrl& url, const platform::TreeSurvey& survey) {
    const QString source = url.toLocalFile();
    const std::string path = local(source);
    // A plain removal that would stop half-way is not begun: it would destroy part of the
    // original before the administrator is even asked.
    if (platform::canRemoveTree(path))
        m_files->remove(path, survey, false);
    const bool elevated = platform::removableLeft(path, survey);
    if (elevated) {
        // A lock while the prompt waits dismisses it: the add is then undone below.
        const platform::StopWhen stop(&m_cancelRequested);
        const CommandRunner& run = m_elevationRunner ? m_elevationRunner : CommandRunner(runCommand);
        run(elevatedRemovalCommand(source), QByteArray::fromStdString(platform::encodeSurvey(survey)));
    }
    if (platform::untouched(path, survey)) {
        // Nothing has gone, so the original is whole where it was: the add is undone.
        m_files->erase(local(vaultRoot() + QLatin1Char('/') + url.fileName()));
        try {
            setOrigin(std::nullopt, url.fileName());
        } catch (const VaultError&) {
        }
        if (elevated)
            throw VaultError::cannotRemoveSource(url.fileName());
        throw VaultError::ioFailed(tr("\u201C%1\u201D changed while it was being added, so it was "
                                      "left where it was and not added.")
                                       .arg(url.fileName()));
    }
    platform::forgetTracesBelow({source});
    if (platform::existsNoFollow(path)) {
        // Part of it has gone: the vault's copy is now the only whole one and stays.
        refreshItems();
        throw VaultError::ioFailed(leftBehindMessage(url.fileName(), source));
    }
}
