#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>

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

// The desktop's file pickers, modal: each call returns once the user has chosen or
// cancelled. Native through the desktop's own dialogs where the platform theme offers them
// (the desktop portal, KDE, GTK). Tests put their own in its place.
class Panels : public QObject {
    Q_OBJECT

public:
    explicit Panels(QObject* parent = nullptr);

    // The chosen files or folders in the order given, or none when cancelled.
    virtual std::optional<QList<QUrl>> runOpenPanel(const OpenPanelOptions& options);
    // The chosen destination, or none when cancelled.
    virtual std::optional<QUrl> runSavePanel(const SavePanelOptions& options);
};

} // namespace platform
