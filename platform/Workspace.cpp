#include "Workspace.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QStandardPaths>

namespace platform {

namespace {

// Without a desktop (a bare window manager, or offscreen) Qt knows no icon theme and looks
// for icons nowhere but in its resources. Then the freedesktop folders are searched, with
// Adwaita, which the application depends on, behind the base theme.
void ensureIconTheme() {
    static const bool done = [] {
        QStringList paths = QIcon::themeSearchPaths();
        for (const QString& data :
             QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
            const QString icons = data + QStringLiteral("/icons");
            if (!paths.contains(icons))
                paths.append(icons);
        }
        QIcon::setThemeSearchPaths(paths);
        if (QIcon::themeName().isEmpty())
            QIcon::setThemeName(QStringLiteral("hicolor"));
        if (QIcon::fallbackThemeName().isEmpty())
            QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
        return true;
    }();
    Q_UNUSED(done);
}

} // namespace

Workspace::Workspace(QObject* parent) : QObject(parent) {}

bool Workspace::open(const QUrl& url) {
    return QDesktopServices::openUrl(url);
}

QIcon Workspace::iconFor(const QString& path) {
    ensureIconTheme();
    static const QMimeDatabase mimeTypes;
    const QFileInfo info(path);
    // A link is shown as what it points to, like the file manager does; a broken one as a
    // link.
    const QMimeType type = info.isSymLink() && !info.exists()
                               ? mimeTypes.mimeTypeForName(QStringLiteral("inode/symlink"))
                               : mimeTypes.mimeTypeForFile(info);
    for (const QString& name : {type.iconName(), type.genericIconName()}) {
        if (!name.isEmpty() && QIcon::hasThemeIcon(name))
            return QIcon::fromTheme(name);
    }
    // Every folder is a folder, whatever its name suggests.
    if (info.isDir() && QIcon::hasThemeIcon(QStringLiteral("folder")))
        return QIcon::fromTheme(QStringLiteral("folder"));
    return {};
}

} // namespace platform
