#include "VaultManager.h"

#include "ToolSupport.h"
#include "platform/DesktopTraces.h"
#include "platform/Files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QThread>

namespace {

#ifdef Q_OS_MACOS
const QString kImageName = QStringLiteral("vault.sparsebundle");
#else
// A gocryptfs folder, which gocryptfs itself can also open.
const QString kImageName = QStringLiteral("vault.gocryptfs");
#endif

QString defaultSupportDir() {
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (data.isEmpty())
        qFatal("No folder for application data");
    return QDir(data).filePath(QStringLiteral("Morvanta"));
}

} // namespace

VaultManager::VaultManager(std::optional<QString> supportDir, HDIUtilRunner hdiutilRunner,
                           QObject* parent)
    : QObject(parent), m_supportDir(supportDir ? *supportDir : defaultSupportDir()),
      m_hdiutilRunner(hdiutilRunner ? std::move(hdiutilRunner) : HDIUtilRunner(runHDIUtilProcess)) {
    QDir().mkpath(m_supportDir);
}

VaultManager::~VaultManager() {
    finishBackgroundWork(true);
    forgetPassword();
}

QString VaultManager::bundlePath() const { return QDir(m_supportDir).filePath(kImageName); }

bool VaultManager::vaultExists() const { return QFileInfo::exists(bundlePath()); }

void VaultManager::setIdleTimeoutSeconds(double seconds) {
    if (seconds == m_idleTimeoutSeconds)
        return;
    m_idleTimeoutSeconds = seconds;
    emit idleTimeoutSecondsChanged();
}

HDIUtilResult VaultManager::runTool(const QStringList& args,
                                    const std::optional<QString>& stdinText,
                                    const HDIUtilOutputLine& onLine) const {
    return m_hdiutilRunner(args, stdinText, onLine);
}

void VaultManager::createVault(const QString& password) {
    if (vaultExists())
        throw VaultError::alreadyExists();
    if (const auto reason = unusablePasswordReason(password))
        throw VaultError::ioFailed(*reason);
    const HDIUtilResult result =
        runTool({QStringLiteral("create"), QStringLiteral("-encryption"), QStringLiteral("AES-256"),
                 QStringLiteral("-stdinpass"), QStringLiteral("-size"), QStringLiteral("2t"),
                 QStringLiteral("-type"), QStringLiteral("SPARSEBUNDLE"), QStringLiteral("-fs"),
                 QStringLiteral("APFS"), QStringLiteral("-volname"), kVolumeName, bundlePath()},
                password);
    // Creating does not unlock: the caller unlocks next.
    if (result.status != 0)
        throw VaultError::createFailed(failureMessage(result));
}

void VaultManager::unlock(const QString& password) {
    if (!vaultExists())
        throw VaultError::notInitialized();
    if (const auto reason = unusablePasswordReason(password))
        throw VaultError::ioFailed(*reason);
    attach(password);
}

void VaultManager::attach(const QString& password) {
    const HDIUtilResult result = runTool({QStringLiteral("attach"), QStringLiteral("-stdinpass"),
                                          QStringLiteral("-plist"), QStringLiteral("-nobrowse"),
                                          bundlePath()},
                                         password);
    // A wrong password is not told apart from any other failure.
    if (result.status != 0) {
        throw VaultError::mountFailed(
            result.stderr.isEmpty() ? tr("Wrong password or corrupt vault.") : result.stderr);
    }
    const std::optional<QString> mountPath = parseMountPoint(result.stdout);
    if (!mountPath)
        throw VaultError::mountFailed(tr("Could not determine mount point."));

    setMountPoint(QUrl::fromLocalFile(*mountPath));
    if (!m_mountedAt.contains(*mountPath))
        m_mountedAt.append(*mountPath);
    setUnlocked(true);
    forgetPassword();
    // A copy of our own, so that forgetting it can overwrite it.
    m_unlockedPassword = QString(password.constData(), password.size());
    removeUnfinishedWork();
    refreshItems();
    restartIdleTimer();
}

void VaultManager::lock() {
    // The lock always wins: whatever runs is cancelled, rolls back, and then the vault locks.
    const bool wasShownUnlocked = m_shownUnlocked;
    finishBackgroundWork(true);
    stopIdleTimer();
    // Work that gave way may have locked the vault itself (a password change stopped while
    // the image was detached): locked is what was asked for.
    if (m_mountPoint.isEmpty() && wasShownUnlocked)
        return;
    detachAndPublishLocked();
}

void VaultManager::detachAndPublishLocked() {
    stopIdleTimer();
    if (m_mountPoint.isEmpty())
        throw VaultError::notMounted();
    const QString path = m_mountPoint.toLocalFile();
    if (runTool({QStringLiteral("detach"), path}).status != 0) {
        const HDIUtilResult forced =
            runTool({QStringLiteral("detach"), QStringLiteral("-force"), path});
        // Both failed. If the tool says the image is no longer attached at all (unmounted
        // from outside), the vault is locked already. Otherwise: only standard error here,
        // as it stands.
        if (forced.status != 0) {
            const std::optional<QStringList> attached = attachedMountPoints();
            if (!attached || !attached->isEmpty())
                throw VaultError::unmountFailed(forced.stderr);
        }
    }
    publishLockedState();
}

void VaultManager::publishLockedState() {
    stopIdleTimer();
    setMountPoint({});
    setUnlocked(false);
    setItems({});
    forgetPassword();
    platform::forgetTracesBelow(m_mountedAt);
    m_mountedAt.clear();
}

std::optional<QStringList> VaultManager::attachedMountPoints() const {
    const HDIUtilResult info = runTool({QStringLiteral("info"), QStringLiteral("-plist")});
    if (info.status != 0)
        return std::nullopt;
    return parseAttachedMountPoints(info.stdout, bundlePath());
}

// Only mounts whose app is gone: a first instance that still runs keeps its open vault.
void VaultManager::detachStaleMounts() {
    if (!vaultExists())
        return;
    const HDIUtilResult info = runTool({QStringLiteral("info"), QStringLiteral("-plist")});
    const QStringList stale =
        info.status == 0 ? parseStaleMountPoints(info.stdout, bundlePath()).value_or(QStringList())
                         : QStringList();
    for (const QString& mountPoint : stale)
        runTool({QStringLiteral("detach"), QStringLiteral("-force"), mountPoint});
    // The app that showed those files did not live to clear the desktop's memory of them.
    if (!stale.isEmpty())
        platform::forgetTracesBelow(stale);
}

void VaultManager::requireMounted() {
    if (m_mountPoint.isEmpty())
        throw VaultError::notMounted();
    if (platform::isMountPoint(QFile::encodeName(vaultRoot()).toStdString()))
        return;
    // Whatever is at the mount point now is a plain folder: nothing may be written there.
    runTool({QStringLiteral("detach"), QStringLiteral("-force"), vaultRoot()});
    publishLockedState();
    throw VaultError::notMounted();
}

void VaultManager::setUnlocked(bool unlocked) {
    m_isUnlocked = unlocked;
    publish([this, unlocked] {
        if (unlocked == m_shownUnlocked)
            return;
        m_shownUnlocked = unlocked;
        emit isUnlockedChanged();
    });
}

void VaultManager::setMountPoint(const QUrl& mountPoint) {
    m_mountPoint = mountPoint;
    publish([this, mountPoint] {
        if (mountPoint == m_shownMountPoint)
            return;
        m_shownMountPoint = mountPoint;
        emit mountPointChanged();
    });
}

void VaultManager::setItems(const QList<VaultItem>& items) {
    publish([this, items] {
        if (items == m_items)
            return;
        m_items = items;
        emit itemsChanged();
    });
}

void VaultManager::forgetPassword() {
    if (!m_unlockedPassword)
        return;
    // Overwritten in place where this is the only copy.
    m_unlockedPassword->fill(QChar(0));
    m_unlockedPassword.reset();
}
