// What the browser's buttons, menus and drops do: each runs its work on the vault's worker and
// reports back as a banner.

#include "VaultBrowser.h"

#include "BrowserTexts.h"
#include "lockscreens/MainLoop.h"

void VaultBrowser::beginAction() {
    setError({});
    setSuccess({});
    restartIdleTimerIfUnlocked();
}

void VaultBrowser::restartIdleTimerIfUnlocked() {
    if (isUnlocked())
        m_vault->restartIdleTimer();
}

void VaultBrowser::runEngineWork(std::function<void(VaultManager&)> work, std::function<void()> succeeded) {
    setBusy(true);
    // Locking replaces the screen, and this object with it, while the work winds down.
    runVaultWork(
        this, m_vault, std::move(work),
        [this, succeeded = std::move(succeeded)](const std::optional<VaultError>& error) {
            if (!error && succeeded)
                succeeded();
            else if (error && !VaultManager::wasCancelled(*error))
                setError(error->errorDescription());
            setBusy(false);
            restartIdleTimerIfUnlocked();
        },
        VaultError::notMounted());
}

platform::OpenPanelOptions VaultBrowser::addPanelOptions() {
    return {.canChooseFiles = true,
            .canChooseDirectories = true,
            .allowsMultipleSelection = true,
            .prompt = tr("Add to Vault"),
            .message = {}};
}

platform::OpenPanelOptions VaultBrowser::moveOutPanelOptions() {
    return {.canChooseFiles = false,
            .canChooseDirectories = true,
            .allowsMultipleSelection = false,
            .prompt = tr("Move Here"),
            .message = tr("Choose destination outside the vault.")};
}

platform::SavePanelOptions VaultBrowser::backupPanelOptions() {
    return {.title = tr("Back Up Vault"),
            .prompt = tr("Back Up"),
            .message =
                tr("Save an encrypted backup of your vault. It opens with your master password."),
            .nameFieldStringValue = QStringLiteral("MorvantaVault-Backup.7z"),
            .allowedContentTypes = {QStringLiteral("application/x-7z-compressed")}};
}

void VaultBrowser::addItem() {
    if (m_busy)
        return;
    beginAction();
    if (!m_panels)
        return;
    // Cancelled: nothing to show, and nothing happened to count as activity again. A choice
    // made after this screen went (the vault locked) never arrives.
    m_panels->openPanel(addPanelOptions(), this, [this](const std::optional<QList<QUrl>>& chosen) {
        if (chosen && !m_busy)
            addEach(*chosen);
    });
}

void VaultBrowser::openItem(const QUrl& url) {
    if (url.isEmpty())
        return;
    if (m_workspace)
        m_workspace->open(url);
    restartIdleTimerIfUnlocked();
}

void VaultBrowser::beginRename(const QUrl& url) {
    if (url.isEmpty())
        return;
    setRenameText(renamePrefill(url));
    setRenameTarget(url);
}

void VaultBrowser::commitRename() {
    if (m_renameTarget.isEmpty() || m_busy)
        return;
    const QUrl url = m_renameTarget;
    setRenameTarget({});
    beginAction();
    runEngineWork([url, name = m_renameText](VaultManager& vault) { vault.renameItem(url, name); },
                  [this] {
                      setSelection({});
                      setSuccess(tr("Renamed."));
                  });
}

void VaultBrowser::restoreSelected() {
    if (m_selection.isEmpty() || m_busy)
        return;
    beginAction();
    runEngineWork([url = m_selection](VaultManager& vault) { vault.restoreItem(url); },
                  [this] {
                      setSelection({});
                      setSuccess(tr("Restored to original location."));
                  });
}

void VaultBrowser::removeSelected() {
    if (m_selection.isEmpty() || m_busy)
        return;
    beginAction();
    if (!m_panels)
        return;
    m_panels->openPanel(moveOutPanelOptions(), this,
                        [this, url = m_selection](const std::optional<QList<QUrl>>& chosen) {
                            if (!chosen || chosen->isEmpty() || m_busy)
                                return;
                            // Moving out is its own feedback: the row goes, and no banner says so.
                            runEngineWork([url, folder = chosen->first()](VaultManager& vault) {
                                vault.removeItem(url, folder);
                            }, [this] { setSelection({}); });
                        });
}

void VaultBrowser::deleteSelected() {
    if (m_selection.isEmpty() || m_busy)
        return;
    beginAction();
    runEngineWork([url = m_selection](VaultManager& vault) { vault.deleteItem(url); },
                  [this] {
                      setSelection({});
                      setSuccess(tr("Deleted permanently."));
                  });
}

bool VaultBrowser::handleDrop(const QList<QUrl>& urls) {
    if (!isUnlocked() || m_busy)
        return false;
    m_vault->restartIdleTimer();
    setError({});
    setSuccess({});
    QList<QUrl> files;
    for (const QUrl& url : urls) {
        if (url.isLocalFile())
            files.append(url);
    }
    if (files.isEmpty())
        return false;
    addEach(files);
    return true;
}

// One after another, in the order given: a failure does not stop the rest, and with several
// the last one shows. The new rows are the feedback for those that went in; a cancel stops
// them all.
void VaultBrowser::addEach(const QList<QUrl>& urls) {
    runEngineWork([urls](VaultManager& vault) {
        std::optional<VaultError> last;
        for (const QUrl& url : urls) {
            try {
                vault.addItem(url);
            } catch (const VaultError& error) {
                if (VaultManager::wasCancelled(error))
                    throw;
                last = error;
            }
            vault.restartIdleTimer();
        }
        if (last)
            throw *last;
    });
}

void VaultBrowser::setIdle(double minutes) {
    if (minutes != m_idleMinutes) {
        m_idleMinutes = minutes;
        emit idleMinutesChanged();
    }
    if (!m_vault)
        return;
    m_vault->setIdleTimeoutSeconds(minutes * 60.0);
    // The new delay counts from now.
    restartIdleTimerIfUnlocked();
}

void VaultBrowser::chooseDisguise(const QString& raw) {
    if (m_settings)
        m_settings->setDisguiseMode(raw);
}

void VaultBrowser::lock() {
    setError({});
    setSuccess({});
    if (!m_vault)
        return;
    // Not held back by other work: that is cancelled, and the lock follows it at once.
    setBusy(true);
    m_vault->lockInBackground([self = QPointer<VaultBrowser>(this)](const std::optional<VaultError>& error) {
        if (!self)
            return;
        if (error)
            self->setError(error->errorDescription());
        self->setBusy(false);
    });
}

void VaultBrowser::backupVault() {
    if (m_busy)
        return;
    beginAction();
    if (!m_panels)
        return;
    m_panels->savePanel(backupPanelOptions(), this, [this](const std::optional<QUrl>& destination) {
        if (!destination || destination->isEmpty() || m_busy)
            return;
        runEngineWork(
            [destination = *destination](VaultManager& vault) { vault.backupVault(destination); },
            [this] { setSuccess(tr("Encrypted backup saved.")); });
    });
}

void VaultBrowser::passwordChanged() {
    setSuccess(tr("Password changed."));
}
