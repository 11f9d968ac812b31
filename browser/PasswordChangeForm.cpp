#include "PasswordChangeForm.h"

#include "lockscreens/MainLoop.h"
#include "lockscreens/SetupForm.h"

namespace {
constexpr int kMinimumLength = 8;
} // namespace

PasswordChangeForm::PasswordChangeForm(QObject* parent) : QObject(parent) {
    for (auto changed : {&PasswordChangeForm::oldPwChanged, &PasswordChangeForm::newPwChanged,
                         &PasswordChangeForm::confirmPwChanged, &PasswordChangeForm::busyChanged})
        connect(this, changed, this, &PasswordChangeForm::canChangeChanged);
}

void PasswordChangeForm::setVault(VaultManager* vault) {
    if (vault == m_vault)
        return;
    m_vault = vault;
    emit vaultChanged();
}

void PasswordChangeForm::setOldPw(const QString& password) {
    if (password == m_oldPw)
        return;
    m_oldPw = password;
    emit oldPwChanged();
}

void PasswordChangeForm::setNewPw(const QString& password) {
    if (password == m_newPw)
        return;
    m_newPw = password;
    emit newPwChanged();
}

void PasswordChangeForm::setConfirmPw(const QString& password) {
    if (password == m_confirmPw)
        return;
    m_confirmPw = password;
    emit confirmPwChanged();
}

void PasswordChangeForm::setError(const QString& error) {
    if (error == m_error)
        return;
    m_error = error;
    emit errorChanged();
}

void PasswordChangeForm::setBusy(bool busy) {
    if (busy == m_busy)
        return;
    m_busy = busy;
    emit busyChanged();
}

bool PasswordChangeForm::canChange() const {
    return !m_busy && !m_oldPw.isEmpty() && SetupForm::characterCount(m_newPw) >= kMinimumLength &&
           m_newPw == m_confirmPw;
}

QString PasswordChangeForm::buttonTitle() const {
    return m_busy ? tr("Changing...") : tr("Change Password");
}

void PasswordChangeForm::change() {
    if (!canChange())
        return;
    setError({});
    for (const QString& password : {m_oldPw, m_newPw}) {
        if (const auto reason = unusablePasswordReason(password)) {
            setError(*reason);
            return;
        }
    }
    setBusy(true);
    m_pending = true;
    runVaultWork(
        this, m_vault,
        [oldPassword = m_oldPw, newPassword = m_newPw](VaultManager& vault) {
            vault.changePassword(oldPassword, newPassword);
        },
        [this](const std::optional<VaultError>& error) {
            m_pending = false;
            if (error) {
                setError(error->errorDescription());
                setBusy(false);
                return;
            }
            emit succeeded();
            emit dismissRequested();
        },
        VaultError::notMounted());
}

void PasswordChangeForm::reset() {
    if (m_pending)
        return;
    setBusy(false);
    setOldPw({});
    setNewPw({});
    setConfirmPw({});
    setError({});
}
