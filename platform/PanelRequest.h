#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

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

// One panel as the panel program (morvanta-panel) is asked for it: one line of JSON on its
// standard input. Its answer is one line on its standard output, the chosen paths as a JSON
// array, empty when cancelled.
struct PanelRequest {
    std::variant<OpenPanelOptions, SavePanelOptions> options;
    // The window the panel belongs to, as the display server names it; 0 for none.
    quint64 parentWindow = 0;
    // Whose panel it says it is, as that window does: the application's name, its desktop
    // entry and its icon (a PNG). A disguised window's panels wear the disguise too.
    QString applicationName{};
    QString desktopFileName{};
    QByteArray iconPng{};
};

QByteArray encodePanelRequest(const PanelRequest& request);
std::optional<PanelRequest> decodePanelRequest(const QByteArray& line);
QByteArray encodePanelAnswer(const QStringList& chosen);
QStringList decodePanelAnswer(const QByteArray& line);

} // namespace platform
