#pragma once

#include "PanelRequest.h"

#include <QList>
#include <QObject>
#include <QUrl>

#include <functional>
#include <optional>

class QProcess;

namespace platform {

// The desktop's file pickers, shown by Morvanta's panel program (morvanta-panel), so that the
// file dialogs, the widgets they are made of and whatever a platform theme loads for them
// stay out of the process that holds the master password. Each opens and returns at once;
// the answer comes later, nothing when cancelled. While a panel is open the window takes no
// input, as under any modal dialog; a click on it brings the panel forward. A panel lives no
// longer than its `owner`: when the owner goes (its screen is replaced as the vault locks),
// the panel closes at once and a choice made in it is dropped. Tests put their own in its
// place.
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

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void run(PanelRequest request, QObject* owner,
             std::function<void(const QStringList& chosen)> answered);
    // Lets the window take input again once no panel is open; false when already released.
    bool release(QProcess* panel);

    QList<QProcess*> m_open;
};

} // namespace platform
