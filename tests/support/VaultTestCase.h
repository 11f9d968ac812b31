#pragma once

#include "engine/VaultManager.h"
#include "support/FuseHarness.h"

#include <QObject>
#include <QTemporaryDir>
#include <QUrl>

#include <memory>

// The base of test cases that work on a real, open vault: before each test a fresh home
// folder, a runtime folder of its own, and a vault created and unlocked in "home/.support".
// Administrator prompts are written down and always dismissed.
class VaultTestCase : public QObject {
    Q_OBJECT

protected slots:
    void init() {
        REQUIRE_FUSE();
        setUpVault();
    }
    void cleanup() { tearDownVault(); }

protected:
    std::unique_ptr<testsupport::ScopedRuntimeDir> m_runtime;
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<VaultManager> m_vault;
    QList<QStringList> m_elevations;

    QString home(const QString& name = {}) const {
        return name.isEmpty() ? m_home->path() : m_home->filePath(name);
    }
    QString inVault(const QString& name) const { return m_vault->mountPoint().toLocalFile() + '/' + name; }
    static QUrl url(const QString& path) { return QUrl::fromLocalFile(path); }
    QStringList listedNames() const {
        QStringList names;
        for (const VaultItem& item : m_vault->items())
            names.append(item.name);
        return names;
    }

    void openVault(const QString& support) {
        m_vault = std::make_unique<VaultManager>(support, testsupport::fastToolRunner());
        m_vault->setElevationRunner([this](const QStringList& command, const QByteArray&) {
            m_elevations.append(command);
            return 126; // the prompt was dismissed
        });
        m_vault->createVault("pw");
        m_vault->unlock("pw");
    }
    void setUpVault() {
        m_runtime = std::make_unique<testsupport::ScopedRuntimeDir>();
        m_home = std::make_unique<QTemporaryDir>();
        m_elevations.clear();
        openVault(home(".support"));
    }
    void tearDownVault() {
        if (m_vault && m_vault->isUnlocked())
            m_vault->lock();
        m_vault.reset();
        m_home.reset();
        m_runtime.reset();
    }
};
