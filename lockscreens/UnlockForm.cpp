#include "UnlockForm.h"

#include "MainLoop.h"
#include "engine/VaultManager.h"

UnlockForm::UnlockForm(QObject* parent) : QObject(parent) {
    connect(this, &UnlockForm::stealthChanged, this, &UnlockForm::buttonLabelChanged);
    connect(this, &UnlockForm::busyChanged, this, &UnlockForm::buttonLabelChanged);
}

void UnlockForm::setVault(VaultManager* vault) {
    if (vault == m_vault)
        return;
    m_vault = vault;
    emit vaultChanged();
}

void UnlockForm::setStealth(bool stealth) {
    if (stealth == m_stealth)
        return;
    m_stealth = stealth;
    emit stealthChanged();
}

void UnlockForm::setPassword(const QString& password) {
    if (password == m_password)
        return;
    m_password = password;
    emit passwordChanged();
}

void UnlockForm::setError(const QString& error) {
    if (error == m_error)
        return;
    m_error = error;
    emit errorChanged();
}

void UnlockForm::setBusy(bool busy) {
    if (busy == m_busy)
        return;
    m_busy = busy;
    emit busyChanged();
}

QString UnlockForm::title() const {
    return m_stealth ? tr("Sign in") : tr("Unlock Vault");
}

QString UnlockForm::subtitle() const {
    return m_stealth ? tr("Enter password to continue.")
                     : tr("Enter your master password to access vault.");
}

QString UnlockForm::placeholder() const {
    return m_stealth ? tr("Password") : tr("Master password");
}

QString UnlockForm::buttonLabel() const {
    if (m_stealth)
        return m_busy ? tr("Signing in...") : tr("Sign in");
    return m_busy ? tr("Unlocking...") : tr("Unlock");
}

void UnlockForm::unlock() {
    if (m_busy)
        return;
    setError({});
    if (const auto reason = unusablePasswordReason(m_password)) {
        setError(*reason);
        emit failed();
        return;
    }
    setBusy(true);
    runVaultWork(
        this, m_vault, [password = m_password](VaultManager& vault) { vault.unlock(password); },
        [this](const std::optional<VaultError>& error) {
            if (!error)
                return;
            setError(error->errorDescription());
            setBusy(false);
            setPassword({});
            emit failed();
        },
        VaultError::notInitialized());
}
