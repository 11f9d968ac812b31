#pragma once

#include <QCoreApplication>
#include <QString>

#include <exception>
#include <string>

// The one error the vault engine throws. Each case has one fixed text that the screens show
// as it stands, in the user's language.
class VaultError : public std::exception {
    Q_DECLARE_TR_FUNCTIONS(VaultError)

public:
    enum class Case {
        mountFailed,
        unmountFailed,
        createFailed,
        ioFailed,
        cannotMoveSource,
        cannotRemoveSource,
        alreadyExists,
        notInitialized,
        incorrectPassword,
        notMounted,
    };

    static VaultError mountFailed(const QString& message) { return {Case::mountFailed, message}; }
    static VaultError unmountFailed(const QString& output) { return {Case::unmountFailed, output}; }
    static VaultError createFailed(const QString& output) { return {Case::createFailed, output}; }
    static VaultError ioFailed(const QString& message) { return {Case::ioFailed, message}; }
    static VaultError cannotMoveSource(const QString& name) { return {Case::cannotMoveSource, name}; }
    static VaultError cannotRemoveSource(const QString& name) {
        return {Case::cannotRemoveSource, name};
    }
    static VaultError alreadyExists() { return {Case::alreadyExists, {}}; }
    static VaultError notInitialized() { return {Case::notInitialized, {}}; }
    static VaultError incorrectPassword() { return {Case::incorrectPassword, {}}; }
    static VaultError notMounted() { return {Case::notMounted, {}}; }

    Case kind() const { return m_case; }
    // The tool output, reason or item name the case carries; empty for the four without.
    const QString& payload() const { return m_payload; }
    QString errorDescription() const;
    const char* what() const noexcept override { return m_what.c_str(); }

    bool operator==(const VaultError& other) const {
        return m_case == other.m_case && m_payload == other.m_payload;
    }

private:
    VaultError(Case kind, const QString& payload);

    Case m_case;
    QString m_payload;
    std::string m_what;
};
