#pragma once

#include "platform/PanelRequest.h"

#include <QStringList>

#include <functional>

class QFileDialog;

namespace platform {

// Qt reaches the desktop portal's file dialogs on its own only inside Flatpak and Snap.
// On GNOME and KDE, with the portal installed and no platform theme chosen by the user, this
// asks Qt for its portal integration (which falls back to its usual theme where the plugin
// is missing) by setting QT_QPA_PLATFORMTHEME before the application object exists.
void preferPortalFileDialogs();
// The decision alone: the session's XDG_CURRENT_DESKTOP, the user's QT_QPA_PLATFORMTHEME, and
// whether the portal service is installed.
bool portalFileDialogsWanted(const QByteArray& currentDesktop, const QByteArray& chosenTheme,
                             bool portalInstalled);

// Shows the file dialog a request asks for, without blocking: the desktop's own where the
// platform theme offers one, Qt's own otherwise. Modal, and kept over the request's parent
// window. `finished` gets the chosen paths once, none when cancelled.
QFileDialog* showPanelDialog(const PanelRequest& request,
                             std::function<void(const QStringList& chosen)> finished);

} // namespace platform
