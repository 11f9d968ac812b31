#pragma once

#include "platform/Panels.h"
#include "platform/Workspace.h"

#include <QList>
#include <QUrl>

#include <optional>

// Answers the file pickers for the user: each panel takes the next answer of its queue (a
// cancel once the queue is empty) and records what it was asked with.
class ScriptedPanels : public platform::Panels {
public:
    QList<std::optional<QList<QUrl>>> openAnswers;
    QList<std::optional<QUrl>> saveAnswers;
    QList<platform::OpenPanelOptions> openRequests;
    QList<platform::SavePanelOptions> saveRequests;

    std::optional<QList<QUrl>> runOpenPanel(const platform::OpenPanelOptions& options) override {
        openRequests.append(options);
        return openAnswers.isEmpty() ? std::nullopt : openAnswers.takeFirst();
    }
    std::optional<QUrl> runSavePanel(const platform::SavePanelOptions& options) override {
        saveRequests.append(options);
        return saveAnswers.isEmpty() ? std::nullopt : saveAnswers.takeFirst();
    }
};

// Records what would have been opened with the desktop's default application.
class RecordingWorkspace : public platform::Workspace {
public:
    QList<QUrl> opened;

    bool open(const QUrl& url) override {
        opened.append(url);
        return true;
    }
};
