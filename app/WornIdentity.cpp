#include "WornIdentity.h"

#include <QGuiApplication>
#include <QIcon>
#include <QWindow>

void wearIdentity(const QString& name, const QString& desktopFileName, const QIcon& icon) {
    // Read by X11 when the first window is made, for the instance half of its class; the
    // other half is the application name.
    if (QGuiApplication::allWindows().isEmpty())
        qputenv("RESOURCE_NAME", desktopFileName.toLocal8Bit());
    // Settings already opened keep their file; nothing opens one by the application's name
    // after the start.
    QGuiApplication::setApplicationName(name);
    QGuiApplication::setApplicationDisplayName(name);
    QGuiApplication::setDesktopFileName(desktopFileName);
    QGuiApplication::setWindowIcon(icon);
    for (QWindow* window : QGuiApplication::topLevelWindows())
        window->setIcon(icon);
}
