#pragma once

#include "FuseHarness.h"
#include "ScriptedPanels.h"
#include "browser/ItemTableModel.h"
#include "browser/VaultBrowser.h"
#include "engine/VaultManager.h"
#include "platform/Settings.h"

#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTranslator>

namespace testsupport {

// The QML type name of an item, without the suffixes QML adds to it.
QString qmlTypeName(const QObject* object);

// The application's window as `main` builds it, offscreen, over a vault and a settings file
// of the test's own, with file pickers that the test answers and a desktop that only
// records what it is asked to open.
class AppWindow {
public:
    // `disguiseMode` is stored before the window opens, as a previous run would have left it.
    explicit AppWindow(HDIUtilRunner runner, const QString& disguiseMode = QStringLiteral("none"));
    ~AppWindow();

    VaultManager& vault() { return *m_vault; }
    platform::Settings& settings() { return *m_settings; }
    ScriptedPanels& panels() { return *m_panels; }
    RecordingWorkspace& workspace() { return *m_workspace; }
    QQuickWindow* window() const { return m_window; }

    // The item of that object name currently in the window, or null.
    QQuickItem* find(const QString& objectName) const;
    // The same, failing the test's expectations loudly when it is missing.
    QQuickItem* item(const QString& objectName) const;
    // The screen the router shows (for a lock screen, the one the disguise picked), and the
    // name of its QML type ("WelcomeView", …).
    QObject* screen() const;
    QString screenName() const { return screen() ? qmlTypeName(screen()) : QString(); }
    // Every text shown on screen right now, in visible items.
    QStringList visibleTexts() const;
    QString text(const QString& objectName) const;
    // Whether the item, or a dialog or menu of the screen (which are no items), is on screen.
    bool shown(const QString& objectName) const;
    void click(const QString& objectName) const;
    // Types ASCII text key by key into the field, which gets the focus first.
    void typeInto(const QString& objectName, const QString& text) const;
    // Types ASCII text, or presses keys, on whatever has the keyboard focus.
    void type(const QString& text) const;
    void keys(const QList<Qt::Key>& keys, Qt::KeyboardModifiers modifiers = {}) const;
    // Tab, as often as it takes, to the item of that name.
    void tabTo(const QString& objectName) const;
    // Drags local files over the window's middle, and drops them there if asked.
    void drag(const QList<QUrl>& urls, bool drop) const;
    // Opens the menu behind a button and picks one of its entries.
    void choose(const QString& button, const QString& entry) const;
    // Popups place their entries on the next frame.
    void waitForFrame() const;
    // Saves a PNG of the window under the build's screenshot folder, with the window's icon
    // in the top right corner if asked, as a taskbar would show it beside the window. Under
    // MORVANTA_PSEUDO_TRANSLATION, to pseudo/, warning of each text shown untranslated.
    bool screenshot(const QString& name, bool withIcon = false) const;

private:
    QTranslator m_pseudo;
    QTemporaryDir m_support;
    QTemporaryDir m_settingsDir;
    std::unique_ptr<platform::Settings> m_settings;
    std::unique_ptr<ScriptedPanels> m_panels = std::make_unique<ScriptedPanels>();
    std::unique_ptr<RecordingWorkspace> m_workspace = std::make_unique<RecordingWorkspace>();
    std::unique_ptr<VaultManager> m_vault;
    std::unique_ptr<QQmlApplicationEngine> m_engine;
    QQuickWindow* m_window = nullptr;
};

// The window over a freshly made, open vault, and a home folder of the test's own to take
// items from. The helpers report what goes wrong as warnings, which the tests make fatal.
class VaultWindow {
public:
    explicit VaultWindow(const QString& password = QStringLiteral("correct horse battery"),
                         HDIUtilRunner runner = fastToolRunner());

    const QString password;
    ScopedRuntimeDir runtime;
    QTemporaryDir home;
    AppWindow app;

    VaultBrowser* browser() const { return app.screen()->property("browser").value<VaultBrowser*>(); }
    ItemTableModel* table() const { return app.screen()->property("tableModel").value<ItemTableModel*>(); }
    // A file in the home folder, made with `size` bytes.
    QUrl file(const QString& relativePath, qint64 size = 10) const;
    // Moves a home file into the vault as a person would have earlier; its place in the vault.
    QUrl added(const QString& relativePath, qint64 size = 10);
    QUrl inVault(const QString& name) {
        return QUrl::fromLocalFile(app.vault().mountPoint().toLocalFile() + '/' + name);
    }
    QStringList rowNames() const;
    void waitIdle() const;
};

} // namespace testsupport
