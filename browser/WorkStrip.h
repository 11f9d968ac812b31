#pragma once

#include "engine/VaultManager.h"

#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

// What the progress strip under the table shows while the engine works: the item, how much
// of it is done, and a way to stop it.
class WorkStrip : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(VaultManager* vault READ vault WRITE setVault NOTIFY vaultChanged)
    Q_PROPERTY(bool active READ active NOTIFY changed)
    Q_PROPERTY(QString text READ text NOTIFY changed)
    // From 0 to 1; below 0 while the total is not known.
    Q_PROPERTY(double fraction READ fraction NOTIFY changed)

public:
    explicit WorkStrip(QObject* parent = nullptr) : QObject(parent) {}

    VaultManager* vault() const { return m_vault; }
    void setVault(VaultManager* vault);
    bool active() const;
    QString text() const;
    double fraction() const;

    Q_INVOKABLE void cancel();

signals:
    void vaultChanged();
    void changed();

private:
    QPointer<VaultManager> m_vault;
};
