#include "VaultError.h"

VaultError::VaultError(Case kind, const QString& payload)
    : m_case(kind), m_payload(payload), m_what(errorDescription().toStdString()) {}

QString VaultError::errorDescription() const {
    const QString& p = m_payload;
    switch (m_case) {
    case Case::mountFailed:
        // Deliberately the same for a wrong password and every other attach failure.
        return QStringLiteral("Authentication failed.");
    case Case::unmountFailed:
        return QStringLiteral("Lock failed: ") + p;
    case Case::createFailed:
        return QStringLiteral("Create failed: ") + p;
    case Case::ioFailed:
        return QStringLiteral("IO failed: ") + p;
    case Case::cannotMoveSource:
        return QStringLiteral("\u201C") + p +
               QStringLiteral("\u201D can\u2019t be added \u2014 it\u2019s a protected system "
                              "item, or you don\u2019t have permission to move it from its "
                              "current location.");
    case Case::cannotRemoveSource:
        return QStringLiteral("\u201C") + p +
               QStringLiteral("\u201D wasn\u2019t added \u2014 its original couldn\u2019t be "
                              "removed from its current location (the administrator prompt "
                              "was cancelled or failed). Nothing was left in the vault.");
    case Case::alreadyExists:
        return QStringLiteral("Vault already exists.");
    case Case::notInitialized:
        return QStringLiteral("Vault not initialized.");
    case Case::incorrectPassword:
        return QStringLiteral("Current password is incorrect.");
    case Case::notMounted:
        return QStringLiteral("Vault not mounted.");
    }
    return {};
}
