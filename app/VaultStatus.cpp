#include "VaultStatus.h"

#include "engine/VaultManager.h"

VaultStatus::VaultStatus(VaultManager& vault, QObject* parent) : QObject(parent), m_vault(vault) {
    connect(&vault, &VaultManager::isUnlockedChanged, this, &VaultStatus::changed);
    connect(&vault, &VaultManager::mountPointChanged, this, &VaultStatus::changed);
}

QString VaultStatus::stateText() const {
    if (m_vault.isUnlocked())
        return tr("Unlocked — mounted at %1").arg(m_vault.mountPoint().toLocalFile());
    return m_vault.vaultExists() ? tr("Locked") : tr("No vault yet");
}

QString VaultStatus::actionText() const {
    if (m_vault.isUnlocked())
        return tr("Lock");
    return m_vault.vaultExists() ? tr("Unlock") : tr("Create Vault");
}

bool VaultStatus::needsPassword() const { return !m_vault.isUnlocked(); }

bool VaultStatus::act(const QString& password) {
    try {
        if (m_vault.isUnlocked()) {
            m_vault.lock();
        } else {
            if (!m_vault.vaultExists())
                m_vault.createVault(password);
            m_vault.unlock(password);
        }
        m_errorText.clear();
        emit changed();
        return true;
    } catch (const VaultError& error) {
        m_errorText = error.errorDescription();
        emit changed();
        return false;
    }
}
