#pragma once

#include "engine/VaultManager.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QPointer>
#include <QQmlParserStatus>
#include <QSize>
#include <QString>
#include <QtQml/qqmlregistration.h>

// Decides what the window shows from the engine's state and the disguise, and keeps the
// window's size and title in step. Screens never navigate: they call the engine, and this
// follows what the engine publishes.
class RootRouter : public QObject, public QQmlParserStatus {
    Q_OBJECT
    QML_ELEMENT
    Q_INTERFACES(QQmlParserStatus)
    Q_PROPERTY(VaultManager* vault READ vault WRITE setVault NOTIFY vaultChanged)
    Q_PROPERTY(QString disguiseRaw READ disguiseRaw WRITE setDisguiseRaw NOTIFY disguiseRawChanged)
    Q_PROPERTY(bool hasSeenWelcome READ hasSeenWelcome WRITE setHasSeenWelcome NOTIFY
                   hasSeenWelcomeChanged)
    Q_PROPERTY(Screen screen READ screen NOTIFY screenChanged)

public:
    enum class Screen { Welcome, Setup, Unlock, Browser };
    Q_ENUM(Screen)

    explicit RootRouter(QObject* parent = nullptr);

    VaultManager* vault() const { return m_vault; }
    void setVault(VaultManager* vault);
    QString disguiseRaw() const { return m_disguiseRaw; }
    void setDisguiseRaw(const QString& raw);
    bool hasSeenWelcome() const { return m_hasSeenWelcome; }
    void setHasSeenWelcome(bool seen);
    Screen screen() const { return m_screen; }

    static Screen screenFor(bool vaultExists, bool unlocked, bool hasSeenWelcome);
    static QSize contentSizeFor(bool unlocked);

    // Sizes the application's first window for the state and centres it; later, on the
    // event loop, so that the window exists by then. Without a window, nothing happens.
    void resizeForState(bool unlocked);
    // Titles every window of the application by the disguise, in every state.
    void applyWindowTitle();

    // The window is closing: an open vault is locked. A failure can no longer be shown.
    Q_INVOKABLE void contentDisappearing();

    void classBegin() override {}
    void componentComplete() override;

signals:
    void vaultChanged();
    void disguiseRawChanged();
    void hasSeenWelcomeChanged();
    void screenChanged();

private:
    void update();
    void supportFolderChanged();
    void watchSupportFolder();

    QPointer<VaultManager> m_vault;
    QString m_disguiseRaw = QStringLiteral("none");
    bool m_hasSeenWelcome = false;
    Screen m_screen = Screen::Welcome;
    bool m_complete = false;
    // The vault's existence is asked of the disk; this notices it appear or go.
    QFileSystemWatcher m_watcher;
};
