#pragma once

#include "platform/Panels.h"
#include "platform/Workspace.h"

#include <QtQml/qqml.h>

// The desktop's file pickers and file handling are made once by the application (or by a
// test) and handed to the browser; these make them known to QML by name.
struct PanelsForeign {
    Q_GADGET
    QML_FOREIGN(platform::Panels)
    QML_NAMED_ELEMENT(Panels)
    QML_UNCREATABLE("The application makes the panels service.")
};

struct WorkspaceForeign {
    Q_GADGET
    QML_FOREIGN(platform::Workspace)
    QML_NAMED_ELEMENT(Workspace)
    QML_UNCREATABLE("The application makes the workspace.")
};
