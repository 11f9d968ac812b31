#include "VaultError.h"

VaultError::VaultError(Case kind, const QString& payload)
    : m_case(kind), m_payload(payload), m_what(errorDescription().toStdString()) {}

QString VaultError::errorDescription() const {
    const QString& p = m_payload;
    // The payload is the tool's or the system's own reason, in the system's language.
    switch (m_case) {
    case Case::mountFailed:
        // Deliberately the same for a wrong password and every other attach failure.
        return tr("Authentication failed.");
    case Case::unmountFailed:
        return tr("Lock failed: %1").arg(p);
    case Case::createFailed:
        return tr("Create failed: %1").arg(p);
    case Case::ioFailed:
        return tr("IO failed: %1").arg(p);
    case Case::cannotMoveSource:
        return tr("\u201C%1\u201D can\u2019t be added \u2014 it\u2019s a protected system item, or "
                  "you don\u2019t have permission to move it from its current location.")
            .arg(p);
    case Case::cannotRemoveSource:
        return tr("\u201C%1\u201D wasn\u2019t added \u2014 its original couldn\u2019t be removed "
                  "from "
                  "its current location (the administrator prompt was cancelled or failed). "
                  "Nothing was left in the vault.")
            .arg(p);
    case Case::alreadyExists:
        return tr("Vault already exists.");
    case Case::notInitialized:
        return tr("Vault not initialized.");
    case Case::incorrectPassword:
        return tr("Current password is incorrect.");
    case Case::notMounted:
        return tr("Vault not mounted.");
    }
    return {};
}
