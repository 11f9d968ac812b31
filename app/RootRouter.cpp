#include "RootRouter.h"

#include "engine/VaultManager.h"
#include "lockscreens/DisguiseMode.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <QScreen>
#include <QTimer>

RootRouter::RootRouter(QObject* parent) : QObject(parent) {
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this,
            &RootRouter::supportFolderChanged);
}

void RootRouter::setVault(VaultManager* vault) {
    if (vault == m_vault)
        return;
    if (m_vault)
        disconnect(m_vault, nullptr, this, nullptr);
    m_vault = vault;
    if (vault) {
        connect(vault, &VaultManager::isUnlockedChanged, this, [this] {
            update();
            resizeForState(m_vault->isUnlocked());
        });
    }
    watchSupportFolder();
    update();
    emit vaultChanged();
}

void RootRouter::setDisguiseRaw(const QString& raw) {
    if (raw == m_disguiseRaw)
        return;
    m_disguiseRaw = raw;
    emit disguiseRawChanged();
    if (m_complete)
        applyWindowTitle();
}

void RootRouter::setHasSeenWelcome(bool seen) {
    if (seen == m_hasSeenWelcome)
        return;
    m_hasSeenWelcome = seen;
    emit hasSeenWelcomeChanged();
    update();
}

RootRouter::Screen RootRouter::screenFor(bool vaultExists, bool unlocked, bool hasSeenWelcome) {
    if (!vaultExists)
        return hasSeenWelcome ? Screen::Setup : Screen::Welcome;
    return unlocked ? Screen::Browser : Screen::Unlock;
}

QSize RootRouter::contentSizeFor(bool unlocked) {
    return unlocked ? QSize(800, 635) : QSize(600, 600);
}

void RootRouter::update() {
    if (!m_vault)
        return;
    // The image may be made or removed behind our back; the watch is renewed each time.
    watchSupportFolder();
    const Screen screen =
        screenFor(m_vault->vaultExists(), m_vault->isUnlocked(), m_hasSeenWelcome);
    if (screen == m_screen)
        return;
    m_screen = screen;
    emit screenChanged();
}

void RootRouter::supportFolderChanged() {
    // The setup screen made the image itself and stays, to show why the new vault would not
    // open if it did not; it leaves through the vault's unlocked state.
    if (m_screen == Screen::Setup)
        watchSupportFolder();
    else
        update();
}

void RootRouter::watchSupportFolder() {
    if (!m_watcher.directories().isEmpty())
        m_watcher.removePaths(m_watcher.directories());
    if (m_vault)
        m_watcher.addPath(m_vault->supportDir().toLocalFile());
}

void RootRouter::resizeForState(bool unlocked) {
    QTimer::singleShot(0, this, [unlocked] {
        for (QWindow* window : QGuiApplication::topLevelWindows()) {
            if (!qobject_cast<QQuickWindow*>(window))
                continue;
            window->resize(contentSizeFor(unlocked));
            if (QScreen* screen = window->screen()) {
                QRect frame = window->frameGeometry();
                frame.moveCenter(screen->availableGeometry().center());
                window->setFramePosition(frame.topLeft());
            }
            return;
        }
    });
}

void RootRouter::applyWindowTitle() {
    const QString title = windowTitle(m_disguiseRaw);
    QTimer::singleShot(0, this, [title] {
        for (QWindow* window : QGuiApplication::topLevelWindows()) {
            if (qobject_cast<QQuickWindow*>(window))
                window->setTitle(title);
        }
    });
}

void RootRouter::contentDisappearing() {
    if (!m_vault || !m_vault->isUnlocked())
        return;
    try {
        m_vault->lock();
    } catch (const VaultError&) {
    }
}

void RootRouter::componentComplete() {
    m_complete = true;
    applyWindowTitle();
    resizeForState(m_vault && m_vault->isUnlocked());
}
