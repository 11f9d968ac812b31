// The steps that every move in or out of the vault shares. A move is one transaction:
// everything is checked before anything moves; the copy is written under a hidden staging
// name, put on stable storage and only then given its name; the original loses only the
// entries that are still what was copied; and once it has begun to go, the new copy stays
// whatever happens next.

#include "OriginsRegistry.h"
#include "engine/VaultManager.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <dirent.h>
#include <sys/stat.h>

namespace {

std::string local(const QString& path) { return QFile::encodeName(path).toStdString(); }

// What is still below `path`: its files, links and empty folders, at most `limit` of them.
void collectLeaves(const std::string& path, QStringList& leaves, int limit, int& more) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0)
        return;
    bool hasChildren = false;
    if (S_ISDIR(info.st_mode)) {
        if (DIR* dir = ::opendir(path.c_str())) {
            while (const dirent* entry = ::readdir(dir)) {
                if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
                    continue;
                hasChildren = true;
                collectLeaves(path + '/' + entry->d_name, leaves, limit, more);
            }
            ::closedir(dir);
        }
    }
    if (hasChildren)
        return;
    if (leaves.size() < limit)
        leaves.append(QFile::decodeName(path.c_str()));
    else
        ++more;
}

} // namespace

platform::TreeSurvey VaultManager::surveyItem(const QString& path) {
    platform::TreeSurvey survey;
    if (const platform::FileError error = m_files->survey(local(path), survey))
        throw VaultError::ioFailed(QString::fromStdString(*error));
    return survey;
}

void VaultManager::flushFor(const QString& path) {
    platform::FileError error = m_files->flush(local(path));
    // The vault's files live in the image on another file system: that is where they must land.
    if (!error && isInVault(path))
        error = m_files->flush(local(bundlePath()));
    if (error)
        throw VaultError::ioFailed(QString::fromStdString(*error));
}

bool VaultManager::isInVault(const QString& path) const {
    return !m_mountPoint.isEmpty() && path.startsWith(vaultRoot() + QLatin1Char('/'));
}

void VaultManager::stageCopy(const QString& source, const QString& target,
                             const platform::TreeSurvey& survey) {
    const QString staging = QFileInfo(target).path() + QLatin1Char('/') + kStagingPrefix +
                            QString::number(QRandomGenerator::system()->generate64(), 16);
    try {
        const platform::CopyObserver observer = progressObserver(QFileInfo(target).fileName(), survey.totalBytes,
                                                                     std::int64_t(survey.entries.size()));
        if (const platform::FileError error = m_files->copy(local(source), local(staging), survey, observer))
            throw VaultError::ioFailed(QString::fromStdString(*error));
        // Whole on stable storage before it takes the name, and the name before the original
        // goes: a crash at any moment leaves at least one whole copy, and never a partial one
        // that looks complete.
        flushFor(staging);
        if (const platform::FileError error = m_files->rename(local(staging), local(target)))
            throw VaultError::ioFailed(QString::fromStdString(*error));
    } catch (const VaultError&) {
        m_files->erase(local(staging));
        throw;
    }
    flushFor(target);
    // The last moment to give way: past it, the original starts to go.
    if (m_cancelRequested) {
        m_files->erase(local(target));
        throw VaultError::ioFailed(kCancelledText);
    }
}

QString VaultManager::leftBehindMessage(const QString& name, const QString& original) const {
    QStringList leaves;
    int more = 0;
    collectLeaves(local(original), leaves, 10, more);
    const bool fromVault = isInVault(original);
    QString text =
        fromVault
            ? tr("\u201C%1\u201D is at its new place, but not all of it could be taken out of "
                 "the vault (it changed or was added to during the move, or could not be "
                 "removed). Still in the vault:")
            : tr("\u201C%1\u201D is in the vault, but not all of it could be taken from its "
                 "original place (it changed or was added to during the move, or could not "
                 "be removed). Still there:");
    text = text.arg(name);
    for (const QString& leaf : leaves)
        text += QLatin1Char('\n') + leaf;
    if (more > 0)
        text += QLatin1Char('\n') + tr("\u2026and %1 more").arg(more);
    return text;
}
