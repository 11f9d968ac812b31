#pragma once

#include <QObject>
#include <QString>
#include <QtQml/qqmlregistration.h>

class VaultManager;

// The state the start window shows (no vault, locked, unlocked) and its one action, which
// creates, unlocks or locks depending on that state.
class VaultStatus : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the application")
    Q_PROPERTY(QString stateText READ stateText NOTIFY changed)
    Q_PROPERTY(QString actionText READ actionText NOTIFY changed)
    Q_PROPERTY(bool needsPassword READ needsPassword NOTIFY changed)
    Q_PROPERTY(QString errorText READ errorText NOTIFY changed)

public:
    explicit VaultStatus(VaultManager& vault, QObject* parent = nullptr);

    QString stateText() const;
    QString actionText() const;
    bool needsPassword() const;
    QString errorText() const { return m_errorText; }

    // Returns whether it succeeded; on failure errorText says why.
    Q_INVOKABLE bool act(const QString& password);

signals:
    void changed();

private:
    VaultManager& m_vault;
    QString m_errorText;
};
