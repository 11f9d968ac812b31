#pragma once

#include "platform/Panels.h"
#include "platform/Workspace.h"

#include <QList>
#include <QTimer>
#include <QUrl>

#include <optional>

// Answers the file pickers for the user: each panel takes the next answer of its queue (a
// cancel once the queue is empty), a moment later as a real one would, unless its owner has
// gone; and records what it was asked with.
class ScriptedPanels : public platform::Panels {
public:
    QList<std::optional<QList<QUrl>>> openAnswers;
    QList<std::optional<QUrl>> saveAnswers;
    QList<platform::OpenPanelOptions> openRequests;
    QList<platform::SavePanelOptions> saveRequests;

    void openPanel(const platform::OpenPanelOptions& options, QObject* owner, OpenAnswer answered) override {
        openRequests.append(options);
        const auto answer = openAnswers.isEmpty() ? std::nullopt : openAnswers.takeFirst();
        QTimer::singleShot(0, owner, [answer, answered] { answered(answer); });
    }
    void savePanel(const platform::SavePanelOptions& options, QObject* owner, SaveAnswer answered) override {
        saveRequests.append(options);
        const auto answer = saveAnswers.isEmpty() ? std::nullopt : saveAnswers.takeFirst();
        QTimer::singleShot(0, owner, [answer, answered] { answered(answer); });
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
