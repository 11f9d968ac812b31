#include "Workspace.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QStandardPaths>

namespace platform {

namespace {

// Without a desktop (a bare window manager, or offscreen) Qt knows no icon theme, or only
// hicolor, which holds no icons for file types or folders. Then the freedesktop folders are
// searched, with Adwaita, which the application depends on, behind the desktop's theme.
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
        const QString adwaita = QStringLiteral("Adwaita");
        const QString hicolor = QStringLiteral("hicolor");
        if (QIcon::themeName().isEmpty() || QIcon::themeName() == hicolor)
            QIcon::setThemeName(adwaita);
        if (QIcon::fallbackThemeName().isEmpty() || QIcon::fallbackThemeName() == hicolor)
            QIcon::setFallbackThemeName(adwaita);
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
    const QFileInfo info(path);
    // Every folder is a folder, whatever its name suggests ("Photos.album").
    if (info.isDir()) {
        for (const QString& name : {QStringLiteral("folder"), QStringLiteral("inode-directory")}) {
            if (QIcon::hasThemeIcon(name))
                return QIcon::fromTheme(name);
        }
        return {};
    }
    static const QMimeDatabase mimeTypes;
    // A link is shown as what it points to, like the file manager does; a broken one as a
    // link.
    const QMimeType type = info.isSymLink() && !info.exists()
                               ? mimeTypes.mimeTypeForName(QStringLiteral("inode/symlink"))
                               : mimeTypes.mimeTypeForFile(info);
    for (const QString& name : {type.iconName(), type.genericIconName()}) {
        if (!name.isEmpty() && QIcon::hasThemeIcon(name))
            return QIcon::fromTheme(name);
    }
    return {};
}

} // namespace platform
