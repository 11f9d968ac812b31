#include "VaultBrowser.h"

#include "BrowserTexts.h"
#include "lockscreens/DisguiseMode.h"

#include <QCoreApplication>
#include <QVariantMap>

namespace {

QVariantMap menuEntry(const QString& action, const QString& title, const QString& symbol,
                      bool destructive = false) {
    return {{QStringLiteral("action"), action},
            {QStringLiteral("title"), title},
            {QStringLiteral("symbol"), symbol},
            {QStringLiteral("destructive"), destructive}};
}

QString disguiseMenuLabel(DisguiseMode mode) {
    switch (mode) {
    case DisguiseMode::none:
        return QCoreApplication::translate("VaultBrowser", "None (Branded)");
    case DisguiseMode::neutral:
        return QCoreApplication::translate("VaultBrowser", "Neutral");
    case DisguiseMode::math:
        return QCoreApplication::translate("VaultBrowser", "Math Quiz");
    }
    return {};
}

} // namespace

VaultBrowser::VaultBrowser(QObject* parent) : QObject(parent) {}

void VaultBrowser::setVault(VaultManager* vault) {
    if (vault == m_vault)
        return;
    if (m_vault)
        disconnect(m_vault, nullptr, this, nullptr);
    m_vault = vault;
    if (vault) {
        connect(vault, &VaultManager::idleTimeoutSecondsChanged, this,
                &VaultBrowser::idleTextChanged);
        connect(vault, &VaultManager::itemsChanged, this, &VaultBrowser::itemsChanged);
        connect(vault, &VaultManager::mountPointChanged, this, &VaultBrowser::mountPathChanged);
    }
    emit vaultChanged();
    emit idleTextChanged();
    emit itemCountTextChanged();
    emit mountPathChanged();
}

void VaultBrowser::setSettings(platform::Settings* settings) {
    if (settings == m_settings)
        return;
    if (m_settings)
        disconnect(m_settings, nullptr, this, nullptr);
    m_settings = settings;
    if (settings) {
        connect(settings, &platform::Settings::disguiseModeChanged, this,
                &VaultBrowser::disguiseChoicesChanged);
    }
    emit settingsChanged();
    emit disguiseChoicesChanged();
}

void VaultBrowser::setPanels(platform::Panels* panels) {
    if (panels == m_panels)
        return;
    m_panels = panels;
    emit panelsChanged();
}

void VaultBrowser::setWorkspace(platform::Workspace* workspace) {
    if (workspace == m_workspace)
        return;
    m_workspace = workspace;
    emit workspaceChanged();
}

void VaultBrowser::setSelection(const QUrl& url) {
    if (url == m_selection)
        return;
    m_selection = url;
    emit selectionChanged();
}

void VaultBrowser::setError(const QString& error) {
    if (error == m_error)
        return;
    m_error = error;
    emit errorChanged();
}

void VaultBrowser::setSuccess(const QString& success) {
    if (success == m_success)
        return;
    m_success = success;
    emit successChanged();
}

void VaultBrowser::setShowPasswordChange(bool show) {
    if (show == m_showPasswordChange)
        return;
    m_showPasswordChange = show;
    emit showPasswordChangeChanged();
}

void VaultBrowser::setShowAbout(bool show) {
    if (show == m_showAbout)
        return;
    m_showAbout = show;
    emit showAboutChanged();
}

void VaultBrowser::setDragOver(bool over) {
    if (over == m_isDragOver)
        return;
    m_isDragOver = over;
    emit isDragOverChanged();
}

void VaultBrowser::setConfirmDelete(bool confirm) {
    if (confirm == m_confirmDelete)
        return;
    // The message names the item the confirmation is for, as it is when it opens.
    if (confirm) {
        m_deleteMessage = ::deleteMessage(m_selection.fileName());
        emit deleteMessageChanged();
    }
    m_confirmDelete = confirm;
    emit confirmDeleteChanged();
}

void VaultBrowser::setConfirmRestore(bool confirm) {
    if (confirm == m_confirmRestore)
        return;
    if (confirm) {
        const std::optional<QString> folder =
            m_vault && !m_selection.isEmpty() ? m_vault->restoreFolder(m_selection) : std::nullopt;
        m_restoreMessage = ::restoreMessage(m_selection.fileName(), folder);
        emit restoreMessageChanged();
    }
    m_confirmRestore = confirm;
    emit confirmRestoreChanged();
}

void VaultBrowser::setRenameTarget(const QUrl& url) {
    if (url == m_renameTarget)
        return;
    m_renameTarget = url;
    emit renameTargetChanged();
}

void VaultBrowser::setRenameText(const QString& text) {
    if (text == m_renameText)
        return;
    m_renameText = text;
    emit renameTextChanged();
}

void VaultBrowser::setBusy(bool busy) {
    if (busy == m_busy)
        return;
    m_busy = busy;
    emit busyChanged();
}

QString VaultBrowser::idleText() const {
    return ::idleText(m_vault ? m_vault->idleTimeoutSeconds() : 0.0);
}

QString VaultBrowser::itemCountText() const {
    return ::itemCountText(m_vault ? m_vault->items().size() : 0);
}

QString VaultBrowser::mountPath() const {
    return m_vault ? m_vault->mountPoint().toLocalFile() : QString();
}

QString VaultBrowser::renameMessage() const {
    return m_renameTarget.isEmpty() ? QString() : ::renameMessage(m_renameTarget);
}

QString VaultBrowser::lockHelpText() {
    return ::lockHelpText();
}

QVariantList VaultBrowser::disguiseChoices() const {
    const QString stored = m_settings ? m_settings->disguiseMode() : QStringLiteral("none");
    QVariantList choices;
    for (DisguiseMode mode : allDisguiseModes()) {
        choices.append(QVariantMap{{QStringLiteral("raw"), rawValue(mode)},
                                   {QStringLiteral("label"), disguiseMenuLabel(mode)},
                                   {QStringLiteral("checked"), stored == rawValue(mode)}});
    }
    return choices;
}

void VaultBrowser::itemsChanged() {
    emit itemCountTextChanged();
    // A selected item that has left the vault is no longer selected.
    if (m_selection.isEmpty() || !m_vault)
        return;
    for (const VaultItem& item : m_vault->items()) {
        if (item.url == m_selection)
            return;
    }
    setSelection({});
}

QVariantList VaultBrowser::rowMenu(const QUrl& url) const {
    if (url.isEmpty())
        return {};
    QVariantList entries{
        menuEntry(QStringLiteral("open"), tr("Open"), QStringLiteral("folder")),
        menuEntry(QStringLiteral("rename"), tr("Rename\u2026"), QStringLiteral("pencil"))};
    if (m_vault && !m_vault->mountPoint().isEmpty() && m_vault->restoreFolder(url)) {
        entries.append(menuEntry(QStringLiteral("restore"), tr("Restore to Original Location"),
                                 QStringLiteral("arrow.uturn.backward")));
    }
    entries.append(
        menuEntry(QStringLiteral("moveOut"), tr("Move Out\u2026"), QStringLiteral("arrow.up.doc")));
    entries.append(menuEntry(QStringLiteral("divider"), {}, {}));
    entries.append(
        menuEntry(QStringLiteral("delete"), tr("Delete"), QStringLiteral("trash"), true));
    return entries;
}

void VaultBrowser::chooseRowMenuEntry(const QString& action, const QUrl& url) {
    if (url.isEmpty())
        return;
    setSelection(url);
    if (action == QLatin1String("open"))
        openItem(url);
    else if (action == QLatin1String("rename"))
        beginRename(url);
    else if (action == QLatin1String("restore"))
        setConfirmRestore(true);
    else if (action == QLatin1String("moveOut"))
        removeSelected();
    else if (action == QLatin1String("delete"))
        setConfirmDelete(true);
}
