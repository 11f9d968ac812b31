#pragma once

#include "engine/VaultManager.h"

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

// The first-run screen's state and rules: the two password entries, the strength meter,
// the wording (vault or, when disguised, account) and creating the vault.
class SetupForm : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(VaultManager* vault READ vault WRITE setVault NOTIFY vaultChanged)
    Q_PROPERTY(QString disguiseRaw READ disguiseRaw WRITE setDisguiseRaw NOTIFY disguiseRawChanged)
    Q_PROPERTY(QString password READ password WRITE setPassword NOTIFY passwordChanged)
    Q_PROPERTY(QString confirm READ confirm WRITE setConfirm NOTIFY confirmChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged)
    Q_PROPERTY(bool canSubmit READ canSubmit NOTIFY canSubmitChanged)
    Q_PROPERTY(bool mismatch READ mismatch NOTIFY canSubmitChanged)
    Q_PROPERTY(int level READ level NOTIFY passwordChanged)
    Q_PROPERTY(QString caption READ caption NOTIFY passwordChanged)
    Q_PROPERTY(QColor captionColor READ captionColor NOTIFY wordingChanged)
    Q_PROPERTY(bool disguised READ disguised NOTIFY disguiseRawChanged)
    Q_PROPERTY(QColor accent READ accent NOTIFY disguiseRawChanged)
    Q_PROPERTY(QString title READ title NOTIFY disguiseRawChanged)
    Q_PROPERTY(QString subtitle READ subtitle NOTIFY disguiseRawChanged)
    Q_PROPERTY(QString passwordPlaceholder READ passwordPlaceholder NOTIFY disguiseRawChanged)
    Q_PROPERTY(QString notice READ notice NOTIFY disguiseRawChanged)
    Q_PROPERTY(QString buttonLabel READ buttonLabel NOTIFY wordingChanged)

public:
    explicit SetupForm(QObject* parent = nullptr);

    VaultManager* vault() const { return m_vault; }
    void setVault(VaultManager* vault);
    QString disguiseRaw() const { return m_disguiseRaw; }
    void setDisguiseRaw(const QString& raw);
    QString password() const { return m_password; }
    void setPassword(const QString& password);
    QString confirm() const { return m_confirm; }
    void setConfirm(const QString& confirm);
    QString error() const { return m_error; }
    bool busy() const { return m_busy; }

    bool canSubmit() const;
    // The confirmation has been typed and is not the password.
    bool mismatch() const { return !m_confirm.isEmpty() && m_confirm != m_password; }
    int level() const { return strengthLevel(passwordScore(m_password)); }
    QString caption() const;
    QColor captionColor() const;

    bool disguised() const;
    QColor accent() const;
    QString title() const;
    QString subtitle() const;
    QString passwordPlaceholder() const;
    QString notice() const;
    QString buttonLabel() const;

    // 0..100; advisory only.
    Q_INVOKABLE static int passwordScore(const QString& password);
    // 0..4: the score in quarters, rounded to the nearest.
    static int strengthLevel(int score);
    // What a person counts as characters: "é" written as e plus an accent is one.
    static int characterCount(const QString& text);
    static QColor levelColor(int level, const QColor& accent);

    // Checks the entries, then creates the vault and opens it. On success the screen is
    // about to be replaced, so `busy` stays set.
    Q_INVOKABLE void create();

signals:
    void vaultChanged();
    void disguiseRawChanged();
    void passwordChanged();
    void confirmChanged();
    void errorChanged();
    void busyChanged();
    void canSubmitChanged();
    void wordingChanged();
    // An attempt was refused; the entry to fix is the confirmation or the password.
    void failed(bool atConfirmation);

private:
    void setError(const QString& error);
    void setBusy(bool busy);
    void fail(const QString& error, bool atConfirmation = false);

    QPointer<VaultManager> m_vault;
    QString m_disguiseRaw = QStringLiteral("none");
    QString m_password;
    QString m_confirm;
    QString m_error;
    bool m_busy = false;
};
