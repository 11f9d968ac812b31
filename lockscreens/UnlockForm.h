#pragma once

#include "engine/VaultManager.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

// The password lock screen's state and rules, in its branded face or, with `stealth`, as a
// neutral sign-in that never mentions a vault.
class UnlockForm : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(VaultManager* vault READ vault WRITE setVault NOTIFY vaultChanged)
    Q_PROPERTY(bool stealth READ stealth WRITE setStealth NOTIFY stealthChanged)
    Q_PROPERTY(QString password READ password WRITE setPassword NOTIFY passwordChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged)
    Q_PROPERTY(QString title READ title NOTIFY stealthChanged)
    Q_PROPERTY(QString subtitle READ subtitle NOTIFY stealthChanged)
    Q_PROPERTY(QString placeholder READ placeholder NOTIFY stealthChanged)
    Q_PROPERTY(QString buttonLabel READ buttonLabel NOTIFY buttonLabelChanged)

public:
    explicit UnlockForm(QObject* parent = nullptr);

    VaultManager* vault() const { return m_vault; }
    void setVault(VaultManager* vault);
    bool stealth() const { return m_stealth; }
    void setStealth(bool stealth);
    QString password() const { return m_password; }
    void setPassword(const QString& password);
    QString error() const { return m_error; }
    bool busy() const { return m_busy; }

    QString title() const;
    QString subtitle() const;
    QString placeholder() const;
    QString buttonLabel() const;

    // Tries the password exactly as typed. On failure the engine's text is shown and the
    // field emptied for a fresh attempt; on success `busy` stays set while the screen goes.
    Q_INVOKABLE void unlock();

signals:
    void vaultChanged();
    void stealthChanged();
    void passwordChanged();
    void errorChanged();
    void busyChanged();
    void buttonLabelChanged();
    // An attempt was refused and the screen is ready for the next one.
    void failed();

private:
    void setError(const QString& error);
    void setBusy(bool busy);

    QPointer<VaultManager> m_vault;
    bool m_stealth = false;
    QString m_password;
    QString m_error;
    bool m_busy = false;
};
