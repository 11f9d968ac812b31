#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <functional>
#include <optional>

namespace platform {

// What an open panel lets the user pick, and the words it shows.
struct OpenPanelOptions {
    bool canChooseFiles = true;
    bool canChooseDirectories = false;
    bool allowsMultipleSelection = false;
    QString prompt;  // the accept button
    QString message; // a line telling the user what to pick
    bool operator==(const OpenPanelOptions&) const = default;
};

// What a save panel proposes, and the words it shows.
struct SavePanelOptions {
    QString title;
    QString prompt;
    QString message;
    QString nameFieldStringValue;    // the proposed file name
    QStringList allowedContentTypes; // MIME type names; the first gives the file's suffix
    bool operator==(const SavePanelOptions&) const = default;
};

// Qt reaches the desktop portal's file dialogs on its own only inside Flatpak and Snap.
// On GNOME and KDE, with the portal installed and no platform theme chosen by the user, this
// asks Qt for its portal integration (which falls back to its usual theme where the plugin
// is missing) by setting QT_QPA_PLATFORMTHEME before the application object exists; true
// when it did, so the caller can take the variable back once the application is up.
bool preferPortalFileDialogs();
// The decision alone: the session's XDG_CURRENT_DESKTOP, the user's QT_QPA_PLATFORMTHEME, and
// whether the portal service is installed.
bool portalFileDialogsWanted(const QByteArray& currentDesktop, const QByteArray& chosenTheme,
                             bool portalInstalled);

// The desktop's file pickers, native through the desktop's own dialogs where the platform
// theme offers them (the desktop portal, KDE, GTK). Each opens and returns at once, with no
// event loop of its own; the answer comes later, nothing when cancelled. A panel lives no
// longer than its `owner`: when the owner goes (its screen is replaced as the vault locks),
// the panel closes and a choice made in it is dropped. Tests put their own in its place.
class Panels : public QObject {
    Q_OBJECT

public:
    explicit Panels(QObject* parent = nullptr);

    // The chosen files or folders in the order given.
    using OpenAnswer = std::function<void(const std::optional<QList<QUrl>>& chosen)>;
    virtual void openPanel(const OpenPanelOptions& options, QObject* owner, OpenAnswer answered);
    // The chosen destination.
    using SaveAnswer = std::function<void(const std::optional<QUrl>& chosen)>;
    virtual void savePanel(const SavePanelOptions& options, QObject* owner, SaveAnswer answered);
};

} // namespace platform
