#include "SetupForm.h"

#include "DisguiseMode.h"
#include "MainLoop.h"
#include "engine/VaultManager.h"

#include <QTextBoundaryFinder>

#include <cmath>

namespace {

constexpr int kMinimumLength = 8;

const QColor kGold = QColor::fromRgbF(0.98f, 0.85f, 0.55f);
const QColor kDisguisedAccent = QColor::fromRgbF(1, 1, 1, 0.85f);

// The first code point of each user-perceived character: a letter with combining accents
// is judged by its letter, as a person would.
QList<char32_t> characterLeads(const QString& text) {
    QList<char32_t> leads;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype start = 0;
    while (finder.toNextBoundary() != -1) {
        const qsizetype end = finder.position();
        if (end > start)
            leads.append(QStringView(text).mid(start, end - start).toUcs4().value(0));
        start = end;
    }
    return leads;
}

} // namespace

SetupForm::SetupForm(QObject* parent) : QObject(parent) {
    connect(this, &SetupForm::passwordChanged, this, &SetupForm::canSubmitChanged);
    connect(this, &SetupForm::confirmChanged, this, &SetupForm::canSubmitChanged);
    connect(this, &SetupForm::busyChanged, this, &SetupForm::canSubmitChanged);
    connect(this, &SetupForm::passwordChanged, this, &SetupForm::wordingChanged);
    connect(this, &SetupForm::disguiseRawChanged, this, &SetupForm::wordingChanged);
    connect(this, &SetupForm::busyChanged, this, &SetupForm::wordingChanged);
}

void SetupForm::setVault(VaultManager* vault) {
    if (vault == m_vault)
        return;
    m_vault = vault;
    emit vaultChanged();
}

void SetupForm::setDisguiseRaw(const QString& raw) {
    if (raw == m_disguiseRaw)
        return;
    m_disguiseRaw = raw;
    emit disguiseRawChanged();
}

void SetupForm::setPassword(const QString& password) {
    if (password == m_password)
        return;
    m_password = password;
    emit passwordChanged();
}

void SetupForm::setConfirm(const QString& confirm) {
    if (confirm == m_confirm)
        return;
    m_confirm = confirm;
    emit confirmChanged();
}

void SetupForm::setError(const QString& error) {
    if (error == m_error)
        return;
    m_error = error;
    emit errorChanged();
}

void SetupForm::setBusy(bool busy) {
    if (busy == m_busy)
        return;
    m_busy = busy;
    emit busyChanged();
}

bool SetupForm::canSubmit() const {
    if (m_busy || characterCount(m_password) < kMinimumLength)
        return false;
    return m_password == m_confirm;
}

int SetupForm::characterCount(const QString& text) {
    return int(characterLeads(text).size());
}

int SetupForm::passwordScore(const QString& password) {
    if (password.isEmpty())
        return 0;
    const QList<char32_t> leads = characterLeads(password);
    int score = 0;
    if (leads.size() >= 8)
        score += 20;
    if (leads.size() >= 12)
        score += 20;
    if (leads.size() >= 16)
        score += 15;
    auto any = [&leads](auto test) {
        return std::any_of(leads.begin(), leads.end(), test);
    };
    if (any([](char32_t c) { return QChar::isLower(c); }))
        score += 10;
    if (any([](char32_t c) { return QChar::isUpper(c); }))
        score += 10;
    if (any([](char32_t c) { return QChar::isNumber(c); }))
        score += 10;
    if (any([](char32_t c) { return !QChar::isLetter(c) && !QChar::isNumber(c); }))
        score += 15;
    return score;
}

int SetupForm::strengthLevel(int score) {
    return int(std::lround(score / 25.0));
}

QColor SetupForm::levelColor(int level, const QColor& accent) {
    switch (level) {
    case 0:
    case 1:
        return QColor::fromRgbF(1.0f, 0.45f, 0.45f);
    case 2:
        return QColor::fromRgbF(0.98f, 0.75f, 0.35f);
    case 3:
        return accent;
    default:
        return QColor::fromRgbF(0.55f, 0.95f, 0.70f);
    }
}

QString SetupForm::caption() const {
    if (m_password.isEmpty())
        return tr("At least 8 characters.");
    switch (level()) {
    case 0:
    case 1:
        return tr("Weak password.");
    case 2:
        return tr("Fair password.");
    case 3:
        return tr("Strong password.");
    default:
        return tr("Very strong.");
    }
}

QColor SetupForm::captionColor() const {
    return levelColor(m_password.isEmpty() ? 0 : level(), accent());
}

bool SetupForm::disguised() const {
    return isDisguised(m_disguiseRaw);
}

QColor SetupForm::accent() const {
    return disguised() ? kDisguisedAccent : kGold;
}

QString SetupForm::title() const {
    return disguised() ? tr("Create account") : tr("Create Vault");
}

QString SetupForm::subtitle() const {
    return disguised() ? tr("Set password to continue. Cannot be recovered if lost.")
                       : tr("Set master password. Cannot be recovered if lost.");
}

QString SetupForm::passwordPlaceholder() const {
    return disguised() ? tr("Password") : tr("Master password");
}

QString SetupForm::notice() const {
    return disguised() ? tr("Password is the only key.")
                       : tr("Vault encrypted with AES-256. Password is the only key.");
}

QString SetupForm::buttonLabel() const {
    if (m_busy)
        return tr("Creating...");
    return title();
}

void SetupForm::fail(const QString& error, bool atConfirmation) {
    setError(error);
    emit failed(atConfirmation);
}

void SetupForm::create() {
    // Return in the confirm field still reaches here while a creation runs.
    if (m_busy)
        return;
    setError({});
    if (characterCount(m_password) < kMinimumLength) {
        fail(tr("Password must be at least 8 characters."));
        return;
    }
    if (m_password != m_confirm) {
        fail(tr("Passwords do not match."), true);
        return;
    }
    if (const auto reason = unusablePasswordReason(m_password)) {
        fail(*reason);
        return;
    }
    setBusy(true);
    // A screen without an engine has nothing to create a vault with.
    runVaultWork(
        this, m_vault,
        [password = m_password](VaultManager& vault) {
            vault.createVault(password);
            vault.unlock(password);
        },
        [this](const std::optional<VaultError>& error) {
            if (!error)
                return;
            setBusy(false);
            fail(error->errorDescription());
        },
        VaultError::notInitialized());
}
