#pragma once

#include "HDIUtil.h"
#include "VaultError.h"
#include "WorkProgress.h"
#include "contents/VaultItem.h"
#include "platform/FileLayer.h"

#include <QList>
#include <QMap>
#include <QDeadlineTimer>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QUrl>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

// Why a password cannot be used for the vault, or nothing when it can: the tool hands the
// password to the encryption exactly as its bytes, and some texts cannot travel that way
// (empty, a NUL or a line break, too long). The engine and every screen that takes a
// password ask this one place.
std::optional<QString> unusablePasswordReason(const QString& password);

// The vault engine: owns the one encrypted image, knows whether it is attached and where,
// and publishes those facts to the screens. Every operation either completes or throws
// exactly one VaultError. Operations run where they are called; the screens hand the long
// ones to runInBackground, and whatever thread an operation runs on, the published state
// changes on the thread this object lives on.
class VaultManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isUnlocked READ isUnlocked NOTIFY isUnlockedChanged)
    Q_PROPERTY(QUrl mountPoint READ mountPoint NOTIFY mountPointChanged)
    Q_PROPERTY(QList<VaultItem> items READ items NOTIFY itemsChanged)
    Q_PROPERTY(double idleTimeoutSeconds READ idleTimeoutSeconds WRITE setIdleTimeoutSeconds NOTIFY
                   idleTimeoutSecondsChanged)
    Q_PROPERTY(bool isWorking READ isWorking NOTIFY isWorkingChanged)
    Q_PROPERTY(WorkProgress progress READ progress NOTIFY progressChanged)

public:
    // Without a support folder the user's data folder + "Morvanta" is used; without a runner
    // the disk-image tool is run for real.
    explicit VaultManager(std::optional<QString> supportDir = std::nullopt,
                          HDIUtilRunner hdiutilRunner = runHDIUtilProcess,
                          QObject* parent = nullptr);
    ~VaultManager() override;

    // As published on this object's thread; work under way may be a step ahead.
    bool isUnlocked() const { return m_shownUnlocked; }
    // Empty while locked.
    QUrl mountPoint() const { return m_shownMountPoint; }
    const QList<VaultItem>& items() const { return m_items; }
    double idleTimeoutSeconds() const { return m_idleTimeoutSeconds; }
    void setIdleTimeoutSeconds(double seconds);

    QUrl supportDir() const { return QUrl::fromLocalFile(m_supportDir); }
    QUrl bundleURL() const { return QUrl::fromLocalFile(bundlePath()); }
    QString bundlePath() const;
    // Whether the vault image exists; asked of the file system every time.
    Q_INVOKABLE bool vaultExists() const;

    // Detaches the mounts of this vault's image left behind by an app that has gone (a crash),
    // so that the vault starts locked; one that a running instance holds open is left alone.
    void detachStaleMounts();

    void createVault(const QString& password);
    void unlock(const QString& password);
    // Returns once whatever ran has rolled back and the vault is unmounted: for leaving
    // (quit, close, logout, a signal), which must not end before.
    void lock();
    // The same without holding up this thread: whatever runs is cancelled now, and the worker
    // rolls it back and then detaches; `done` runs here afterwards.
    void lockInBackground(std::function<void(const std::optional<VaultError>& error)> done);
    // Shows the vault as locked without running the tool, for when the image was detached
    // by another step and could not be attached again.
    void publishLockedState();

    // Counts the full idle delay again from now; with a delay of 0 or less, no automatic
    // lock is pending. Called after every vault action.
    Q_INVOKABLE void restartIdleTimer();
    // When the automatic lock is due; never, while none is pending.
    QDeadlineTimer idleLockDeadline() const;
    // --- work off the window's thread (engine/BackgroundWork.cpp) ---

    // Runs `work` on a worker thread, one piece of work at a time. `done` runs back on this
    // object's thread with the error, if any, after every state change the work published.
    // A lock cancels the work first and waits for it to roll back.
    using Work = std::function<void(VaultManager&)>;
    using WorkDone = std::function<void(const std::optional<VaultError>& error)>;
    void runInBackground(Work work, WorkDone done);
    bool isWorking() const { return m_isWorking; }
    WorkProgress progress() const { return m_progress; }
    // Stops a move or copy under way at its next chunk; it rolls back and fails with
    // kCancelledText. Work past the point of no return (an original half removed) finishes.
    Q_INVOKABLE void cancelWork();
    // Never shown, so not translated: the file layer stops a copy with the same words.
    static inline const QString kCancelledText = QStringLiteral("Cancelled.");
    static bool wasCancelled(const VaultError& error);

    // The lock of the idle timer, of sleep and screen lock, and of quitting: locks if the
    // vault is open; a failure has nobody to tell and leaves it open.
    void lockIfUnlocked();

    // Re-keys the image. On success the vault is open again under the new password; the
    // screens see it unlocked throughout.
    void changePassword(const QString& oldPassword, const QString& newPassword);
    // Writes a compressed, encrypted copy of the vault's contents to `destination`,
    // replacing any file there. The vault stays open.
    void backupVault(const QUrl& destination);

    // --- the vault's contents (contents/) ---

    // Rebuilds `items` from the vault's top level. Never fails: an unreadable vault lists
    // nothing.
    void refreshItems();
    // Moves a file, folder or application into the vault and remembers where it came from.
    void addItem(const QUrl& url);
    // Puts an item back exactly where it was taken from.
    void restoreItem(const QUrl& url);
    // Moves an item out of the vault into `folder`, under its current name.
    void removeItem(const QUrl& url, const QUrl& folder);
    // Renames an item, keeping its extension.
    void renameItem(const QUrl& url, const QString& newName);
    // Erases a top-level item for good.
    void deleteItem(const QUrl& url);
    // The folder an item would be restored to, if its origin is known.
    std::optional<QString> restoreFolder(const QUrl& url) const;

    // Runs a command (program first, then its arguments) and gives its exit status, or -1
    // when it could not be started. Used for removing an original that needs an
    // administrator's consent; tests put their own in its place.
    // The command's standard input receives `input`.
    using CommandRunner = std::function<int(const QStringList& command, const QByteArray& input)>;
    void setElevationRunner(CommandRunner runner);
    // The file operations on the user's items; tests watch them through their own.
    void setFileLayer(std::shared_ptr<platform::FileLayer> files);

signals:
    void isUnlockedChanged();
    void mountPointChanged();
    void itemsChanged();
    void idleTimeoutSecondsChanged();
    void isWorkingChanged();
    void progressChanged();

private:
    HDIUtilResult runTool(const QStringList& args,
                          const std::optional<QString>& stdinText = std::nullopt,
                          const HDIUtilOutputLine& onLine = {}) const;
    // "attach" and publishing the unlocked state; shared with reopening after a re-key.
    void attach(const QString& password);
    // The mount points of this vault's image the tool knows of; nothing if it cannot say.
    std::optional<QStringList> attachedMountPoints() const;
    // For operations that write into the vault: throws notMounted, and shows the vault
    // locked, when its mount has gone (unmounted from outside, or its daemon died).
    void requireMounted();
    void detachAndPublishLocked();
    void detachForPasswordChange();
    void attachAfterPasswordChange(const QString& password);
    void stopIdleTimer();

    QString vaultRoot() const { return m_mountPoint.toLocalFile(); }
    VaultItem makeItem(const QUrl& url) const;
    std::optional<qint64> sizeOfItem(const QUrl& url) const;
    QMap<QString, QString> loadOrigins() const;
    // Throws ioFailed when the registry cannot be written.
    void setOrigin(const std::optional<QString>& path, const QString& name);
    void removeUnfinishedWork();
    void removeOriginal(const QUrl& url, const platform::TreeSurvey& survey);
    bool touchesTheVault(const QString& path) const;

    // The steps every move shares (contents/Transfer.cpp).
    platform::TreeSurvey surveyItem(const QString& path);
    void stageCopy(const QString& source, const QString& target, const platform::TreeSurvey& survey);
    void flushFor(const QString& path);
    bool isInVault(const QString& path) const;
    void moveOut(const QUrl& url, const QString& target);
    QString leftBehindMessage(const QString& name, const QString& original) const;

    // Runs `change` on this object's thread: at once when called there, else queued.
    void publish(std::function<void()> change);
    // Waits for the work under way, cancelling it first when asked to.
    void finishBackgroundWork(bool cancel);
    // The observer of a copy or a removal: stops on cancel, and tells of progress now and then.
    platform::CopyObserver progressObserver(const QString& name, std::int64_t totalBytes,
                                            std::int64_t entries);
    void setProgress(const WorkProgress& progress);

    void setUnlocked(bool unlocked);
    void setMountPoint(const QUrl& mountPoint);
    void setItems(const QList<VaultItem>& items);
    void forgetPassword();

    // The engine's own facts, changed by whichever thread runs the operation (one at a time),
    // and the copies the screens see, changed only on this object's thread.
    bool m_isUnlocked = false;
    QUrl m_mountPoint;
    bool m_shownUnlocked = false;
    QUrl m_shownMountPoint;
    QList<VaultItem> m_items;
    double m_idleTimeoutSeconds = 300.0;

    QString m_supportDir;
    HDIUtilRunner m_hdiutilRunner;
    std::optional<QString> m_unlockedPassword;
    // Every place the vault was mounted since it was last locked, for clearing the desktop's
    // traces of its files (the mount point can change with a password change).
    QStringList m_mountedAt;
    QPointer<QTimer> m_idleTimer;
    CommandRunner m_elevationRunner;
    std::shared_ptr<platform::FileLayer> m_files = std::make_shared<platform::FileLayer>();

    std::thread m_worker;
    std::atomic<bool> m_cancelRequested = false;
    bool m_isWorking = false;
    WorkProgress m_progress;

    friend class VaultManagerTestAccess;
};
