#pragma once

#include "engine/VaultManager.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QtQml/qqmlregistration.h>

// The password sheet's state and rules: the current password and the new one twice, a
// button that is simply unavailable until they make sense, and the re-key itself.
class PasswordChangeForm : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(VaultManager* vault READ vault WRITE setVault NOTIFY vaultChanged)
    Q_PROPERTY(QString oldPw READ oldPw WRITE setOldPw NOTIFY oldPwChanged)
    Q_PROPERTY(QString newPw READ newPw WRITE setNewPw NOTIFY newPwChanged)
    Q_PROPERTY(QString confirmPw READ confirmPw WRITE setConfirmPw NOTIFY confirmPwChanged)
    Q_PROPERTY(QString error READ error NOTIFY errorChanged)
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged)
    Q_PROPERTY(bool canChange READ canChange NOTIFY canChangeChanged)
    Q_PROPERTY(QString buttonTitle READ buttonTitle NOTIFY busyChanged)

public:
    explicit PasswordChangeForm(QObject* parent = nullptr);

    VaultManager* vault() const { return m_vault; }
    void setVault(VaultManager* vault);
    QString oldPw() const { return m_oldPw; }
    void setOldPw(const QString& password);
    QString newPw() const { return m_newPw; }
    void setNewPw(const QString& password);
    QString confirmPw() const { return m_confirmPw; }
    void setConfirmPw(const QString& password);
    QString error() const { return m_error; }
    bool busy() const { return m_busy; }

    // Unavailable while busy, without a current password, with a new one shorter than
    // eight characters as a person counts them, or with a confirmation that differs in
    // anything at all.
    bool canChange() const;
    QString buttonTitle() const;

    // Starts the re-key once the busy state has painted. On success `succeeded` and then
    // `dismissRequested` are emitted and `busy` stays set, as the sheet goes; on failure
    // the engine's text is shown, the fields are kept and the button is available again.
    Q_INVOKABLE void change();
    // Empties the sheet for a new showing; a change under way is left to finish.
    Q_INVOKABLE void reset();

signals:
    void vaultChanged();
    void oldPwChanged();
    void newPwChanged();
    void confirmPwChanged();
    void errorChanged();
    void busyChanged();
    void canChangeChanged();
    void succeeded();
    void dismissRequested();

private:
    void setError(const QString& error);
    void setBusy(bool busy);

    QPointer<VaultManager> m_vault;
    QString m_oldPw;
    QString m_newPw;
    QString m_confirmPw;
    QString m_error;
    bool m_busy = false;
    // A change has been started and has not yet run.
    bool m_pending = false;
};
