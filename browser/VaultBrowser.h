#pragma once

#include "engine/VaultManager.h"
#include "platform/Panels.h"
#include "platform/Settings.h"
#include "platform/Workspace.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

#include <functional>

// The vault browser's state and everything the user can do there: the item actions and
// their prompts, the settings menu, dropped files. An empty `selection`, `renameTarget`,
// `error` or `success` means none. Engine work waits for the next frame so that the busy
// state is on screen while the engine blocks the thread.
class VaultBrowser : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(VaultManager* vault READ vault WRITE setVault NOTIFY vaultChanged)
    Q_PROPERTY(platform::Settings* settings READ settings WRITE setSettings NOTIFY settingsChanged)
    Q_PROPERTY(platform::Panels* panels READ panels WRITE setPanels NOTIFY panelsChanged)
    Q_PROPERTY(
        platform::Workspace* workspace READ workspace WRITE setWorkspace NOTIFY workspaceChanged)

    Q_PROPERTY(QUrl selection READ selection WRITE setSelection NOTIFY selectionChanged)
    Q_PROPERTY(QString error READ error WRITE setError NOTIFY errorChanged)
    Q_PROPERTY(QString success READ success WRITE setSuccess NOTIFY successChanged)
    Q_PROPERTY(bool showPasswordChange READ showPasswordChange WRITE setShowPasswordChange NOTIFY
                   showPasswordChangeChanged)
    Q_PROPERTY(bool showAbout READ showAbout WRITE setShowAbout NOTIFY showAboutChanged)
    Q_PROPERTY(double idleMinutes READ idleMinutes NOTIFY idleMinutesChanged)
    Q_PROPERTY(bool isDragOver READ isDragOver WRITE setDragOver NOTIFY isDragOverChanged)
    Q_PROPERTY(
        bool confirmDelete READ confirmDelete WRITE setConfirmDelete NOTIFY confirmDeleteChanged)
    Q_PROPERTY(bool confirmRestore READ confirmRestore WRITE setConfirmRestore NOTIFY
                   confirmRestoreChanged)
    Q_PROPERTY(QUrl renameTarget READ renameTarget WRITE setRenameTarget NOTIFY renameTargetChanged)
    Q_PROPERTY(QString renameText READ renameText WRITE setRenameText NOTIFY renameTextChanged)
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged)

    Q_PROPERTY(QString idleText READ idleText NOTIFY idleTextChanged)
    Q_PROPERTY(QString itemCountText READ itemCountText NOTIFY itemCountTextChanged)
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY itemCountTextChanged)
    Q_PROPERTY(QString mountPath READ mountPath NOTIFY mountPathChanged)
    Q_PROPERTY(QString renameMessage READ renameMessage NOTIFY renameTargetChanged)
    Q_PROPERTY(QString restoreMessage READ restoreMessage NOTIFY restoreMessageChanged)
    Q_PROPERTY(QString deleteMessage READ deleteMessage NOTIFY deleteMessageChanged)
    Q_PROPERTY(QString lockHelpText READ lockHelpText CONSTANT)
    Q_PROPERTY(QVariantList disguiseChoices READ disguiseChoices NOTIFY disguiseChoicesChanged)

public:
    explicit VaultBrowser(QObject* parent = nullptr);

    VaultManager* vault() const { return m_vault; }
    void setVault(VaultManager* vault);
    platform::Settings* settings() const { return m_settings; }
    void setSettings(platform::Settings* settings);
    platform::Panels* panels() const { return m_panels; }
    void setPanels(platform::Panels* panels);
    platform::Workspace* workspace() const { return m_workspace; }
    void setWorkspace(platform::Workspace* workspace);

    QUrl selection() const { return m_selection; }
    void setSelection(const QUrl& url);
    QString error() const { return m_error; }
    void setError(const QString& error);
    QString success() const { return m_success; }
    void setSuccess(const QString& success);
    bool showPasswordChange() const { return m_showPasswordChange; }
    void setShowPasswordChange(bool show);
    bool showAbout() const { return m_showAbout; }
    void setShowAbout(bool show);
    double idleMinutes() const { return m_idleMinutes; }
    bool isDragOver() const { return m_isDragOver; }
    void setDragOver(bool over);
    bool confirmDelete() const { return m_confirmDelete; }
    void setConfirmDelete(bool confirm);
    bool confirmRestore() const { return m_confirmRestore; }
    void setConfirmRestore(bool confirm);
    QUrl renameTarget() const { return m_renameTarget; }
    void setRenameTarget(const QUrl& url);
    QString renameText() const { return m_renameText; }
    void setRenameText(const QString& text);
    bool busy() const { return m_busy; }

    QString idleText() const;
    QString itemCountText() const;
    bool isEmpty() const { return !m_vault || m_vault->items().isEmpty(); }
    QString mountPath() const;
    QString renameMessage() const;
    QString restoreMessage() const { return m_restoreMessage; }
    QString deleteMessage() const { return m_deleteMessage; }
    static QString lockHelpText();
    // The disguise menu: {raw, label, checked} per mode in menu order; only the stored
    // mode is checked, so an unknown stored text checks none.
    QVariantList disguiseChoices() const;

    // The row menu for an item, as {action, title, symbol, destructive} entries, a divider
    // being an entry with the action "divider". Restoring is offered only while an original
    // location is recorded for the item.
    Q_INVOKABLE QVariantList rowMenu(const QUrl& url) const;
    // A row menu entry was chosen: the item becomes the selection, then the entry's action.
    Q_INVOKABLE void chooseRowMenuEntry(const QString& action, const QUrl& url);

    // The item actions.
    Q_INVOKABLE void addItem();
    Q_INVOKABLE void openItem(const QUrl& url);
    Q_INVOKABLE void beginRename(const QUrl& url);
    Q_INVOKABLE void commitRename();
    Q_INVOKABLE void restoreSelected();
    Q_INVOKABLE void removeSelected();
    Q_INVOKABLE void deleteSelected();
    // Files dropped on the screen: false, and nothing done, while the vault is locked or
    // when none of them is a local file.
    Q_INVOKABLE bool handleDrop(const QList<QUrl>& urls);

    // The header and its settings menu.
    Q_INVOKABLE void setIdle(double minutes);
    Q_INVOKABLE void chooseDisguise(const QString& raw);
    Q_INVOKABLE void lock();
    Q_INVOKABLE void backupVault();
    // The password sheet's success callback.
    Q_INVOKABLE void passwordChanged();

    static platform::OpenPanelOptions addPanelOptions();
    static platform::OpenPanelOptions moveOutPanelOptions();
    static platform::SavePanelOptions backupPanelOptions();

signals:
    void vaultChanged();
    void settingsChanged();
    void panelsChanged();
    void workspaceChanged();
    void selectionChanged();
    void errorChanged();
    void successChanged();
    void showPasswordChangeChanged();
    void showAboutChanged();
    void idleMinutesChanged();
    void isDragOverChanged();
    void confirmDeleteChanged();
    void confirmRestoreChanged();
    void renameTargetChanged();
    void renameTextChanged();
    void busyChanged();
    void idleTextChanged();
    void itemCountTextChanged();
    void mountPathChanged();
    void restoreMessageChanged();
    void deleteMessageChanged();
    void disguiseChoicesChanged();

private:
    bool isUnlocked() const { return m_vault && m_vault->isUnlocked(); }
    // The frame every action shares: both banners cleared and the idle timer restarted, as
    // the action counts as activity.
    void beginAction();
    void restartIdleTimerIfUnlocked();
    // Runs engine work once the busy state has painted, then restarts the idle timer again
    // so that a long copy does not leave the timer nearly run out. A thrown error's text
    // becomes the error banner.
    // Runs `work` off the window's thread; `succeeded` runs back on it when the work threw
    // nothing. An error shows in the banner, a cancellation shows nothing.
    void addEach(const QList<QUrl>& urls);
    void runEngineWork(std::function<void(VaultManager&)> work, std::function<void()> succeeded = {});
    void setBusy(bool busy);
    void itemsChanged();

    QPointer<VaultManager> m_vault;
    QPointer<platform::Settings> m_settings;
    QPointer<platform::Panels> m_panels;
    QPointer<platform::Workspace> m_workspace;

    QUrl m_selection;
    QString m_error;
    QString m_success;
    bool m_showPasswordChange = false;
    bool m_showAbout = false;
    double m_idleMinutes = 5;
    bool m_isDragOver = false;
    bool m_confirmDelete = false;
    bool m_confirmRestore = false;
    QUrl m_renameTarget;
    QString m_renameText;
    bool m_busy = false;
    QString m_restoreMessage;
    QString m_deleteMessage;
};
