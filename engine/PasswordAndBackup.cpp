// Re-keying the image and writing an encrypted backup; both need the password the vault
// was opened with.

#include "ToolSupport.h"
#include "VaultManager.h"
#include "platform/Process.h"

#include <QCoreApplication>

namespace {

// What the encryption reads: at most this many bytes, up to the first line feed.
constexpr qsizetype kMaxPasswordBytes = 2048;

// Counted rather than encoded, so that no unwiped copy of the password is made.
qsizetype utf8Length(const QString& text) {
    qsizetype bytes = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            bytes += 4;
            ++i;
        } else {
            bytes += c < 0x80 ? 1 : c < 0x800 ? 2 : 3;
        }
    }
    return bytes;
}

} // namespace

std::optional<QString> unusablePasswordReason(const QString& password) {
    if (password.isEmpty())
        return QCoreApplication::translate("VaultManager", "Passwords can\u2019t be empty.");
    if (password.contains(QChar(0)) || password.contains(QLatin1Char('\n')))
        return QCoreApplication::translate("VaultManager",
                                           "Passwords can\u2019t contain line breaks or NUL "
                                           "characters.");
    if (utf8Length(password) > kMaxPasswordBytes)
        return QCoreApplication::translate("VaultManager",
                                           "Passwords can\u2019t be longer than 2048 bytes.");
    return std::nullopt;
}

void VaultManager::changePassword(const QString& oldPassword, const QString& newPassword) {
    if (!vaultExists())
        throw VaultError::notInitialized();
    if (!m_isUnlocked)
        throw VaultError::notMounted();
    // Checked against the password in memory; the tool is not asked.
    if (!m_unlockedPassword || *m_unlockedPassword != oldPassword)
        throw VaultError::incorrectPassword();
    if (const auto reason = unusablePasswordReason(newPassword))
        throw VaultError::ioFailed(*reason);

    detachForPasswordChange();
    // A lock asked for meanwhile wins at each step that can give way: the vault stays locked
    // under whichever password is in force, and is not opened again.
    const auto giveWayToLock = [this] {
        if (!m_cancelRequested)
            return;
        publishLockedState();
        throw VaultError::ioFailed(kCancelledText);
    };
    giveWayToLock();

    QString input = oldPassword + QChar(0) + newPassword + QChar(0);
    const HDIUtilResult result = runTool(
        {QStringLiteral("chpass"), QStringLiteral("-oldstdinpass"),
         QStringLiteral("-newstdinpass"), bundlePath()},
        input);
    input.fill(QChar(0));

    giveWayToLock();
    if (result.status == 0) {
        try {
            attachAfterPasswordChange(newPassword);
        } catch (const VaultError&) {
            // The new password is in force, but the vault could not be reopened.
            publishLockedState();
            throw;
        }
        return;
    }

    const QString message = tr("Password change failed: %1").arg(failureMessage(result));
    try {
        attachAfterPasswordChange(oldPassword);
    } catch (const VaultError& reopen) {
        publishLockedState();
        throw VaultError::ioFailed(message + QLatin1Char('\n') +
                                   tr("Could not reopen vault: %1").arg(reopen.errorDescription()));
    }
    throw VaultError::ioFailed(message);
}

// Leaves the published state alone, so that the browser does not flip to the lock screen
// while the image is briefly detached.
void VaultManager::detachForPasswordChange() {
    stopIdleTimer();
    if (m_mountPoint.isEmpty())
        throw VaultError::notMounted();
    const QString path = m_mountPoint.toLocalFile();
    if (runTool({QStringLiteral("detach"), path}).status == 0)
        return;
    const HDIUtilResult forced =
        runTool({QStringLiteral("detach"), QStringLiteral("-force"), path});
    if (forced.status == 0)
        return;
    // Still mounted, so the automatic lock must go on guarding it.
    restartIdleTimer();
    throw VaultError::unmountFailed(failureMessage(forced));
}

void VaultManager::attachAfterPasswordChange(const QString& password) { attach(password); }

void VaultManager::backupVault(const QUrl& destination) {
    if (!m_unlockedPassword)
        throw VaultError::notMounted();
    // A mount that has vanished leaves a plain, empty folder: its archive would replace the
    // last good backup with nothing.
    requireMounted();
    // The one tool run that a cancel or a lock stops: the tool then removes its unfinished
    // archive, and the previous backup stays as it was.
    const platform::StopWhen stop(&m_cancelRequested);
    // The tool tells how far it has got, as the backup's share done.
    WorkProgress progress{destination.fileName(), 0, 0, 0, 0, -1};
    setProgress(progress);
    const HDIUtilResult result = runTool(
        {QStringLiteral("create"), QStringLiteral("-encryption"), QStringLiteral("AES-256"),
         QStringLiteral("-stdinpass"), QStringLiteral("-srcfolder"), m_mountPoint.toLocalFile(),
         QStringLiteral("-volname"), kVolumeName, QStringLiteral("-format"),
         QStringLiteral("UDZO"), QStringLiteral("-puppetstrings"), QStringLiteral("-ov"),
         destination.toLocalFile()},
        *m_unlockedPassword, [&](const QString& line) {
            if (const std::optional<double> fraction = parsePercentLine(line)) {
                progress.fraction = *fraction;
                setProgress(progress);
            }
        });
    if (m_cancelRequested)
        throw VaultError::ioFailed(kCancelledText);
    // A failed backup is an I/O failure, not a failed create.
    if (result.status != 0)
        throw VaultError::ioFailed(failureMessage(result));
}
