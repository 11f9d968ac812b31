#include "WorkStrip.h"

#include "BrowserTexts.h"

void WorkStrip::setVault(VaultManager* vault) {
    if (vault == m_vault)
        return;
    if (m_vault)
        disconnect(m_vault, nullptr, this, nullptr);
    m_vault = vault;
    if (m_vault) {
        connect(m_vault, &VaultManager::isWorkingChanged, this, &WorkStrip::changed);
        connect(m_vault, &VaultManager::progressChanged, this, &WorkStrip::changed);
    }
    emit vaultChanged();
    emit changed();
}

bool WorkStrip::active() const {
    return m_vault && m_vault->isWorking() && !m_vault->progress().name.isEmpty();
}

QString WorkStrip::text() const { return m_vault ? progressText(m_vault->progress()) : QString(); }

double WorkStrip::fraction() const {
    if (!m_vault)
        return -1;
    const WorkProgress progress = m_vault->progress();
    if (progress.fraction >= 0)
        return std::min(1.0, progress.fraction);
    if (progress.bytesTotal > 0)
        return std::min(1.0, progress.bytesDone / progress.bytesTotal);
    if (progress.filesTotal > 0)
        return std::min(1.0, double(progress.filesDone) / progress.filesTotal);
    return -1;
}

void WorkStrip::cancel() {
    if (m_vault)
        m_vault->cancelWork();
}
