#pragma once

#include "engine/HDIUtil.h"

#include <QList>

#include <functional>

// Stands in for the disk-image tool: records every call and answers from a queue (status 0
// with empty outputs once the queue is empty), or passes the call on to another runner.
struct RecordingRunner {
    struct Call {
        QStringList args;
        std::optional<QString> stdinText;
        bool operator==(const Call&) const = default;
    };

    QList<Call> calls;
    QList<HDIUtilResult> replies;
    HDIUtilRunner passThrough;

    HDIUtilRunner runner() {
        return [this](const QStringList& args, const std::optional<QString>& stdinText,
                      const HDIUtilOutputLine& onLine) {
            calls.append({args, stdinText});
            if (!replies.isEmpty())
                return replies.takeFirst();
            if (passThrough)
                return passThrough(args, stdinText, onLine);
            return HDIUtilResult{0, {}, {}};
        };
    }

    // The tool's answer to an attach that mounted at `mountPoint`.
    static HDIUtilResult attached(const QString& mountPoint) {
        return {0,
                "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>system-entities</key>"
                "<array><dict><key>mount-point</key><string>" + mountPoint +
                    "</string></dict></array></dict></plist>",
                {}};
    }
    // The argument list that creates a vault.
    static QStringList createArgs(const QString& image, const QString& volume = "MorvantaVault") {
        return {"create", "-encryption", "AES-256", "-stdinpass", "-size", "2t", "-type",
                "SPARSEBUNDLE", "-fs", "APFS", "-volname", volume, image};
    }

    QList<QStringList> argLists() const {
        QList<QStringList> lists;
        for (const Call& call : calls)
            lists.append(call.args);
        return lists;
    }
};
