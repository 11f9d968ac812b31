#pragma once

#include <QIcon>
#include <QObject>
#include <QString>
#include <QUrl>

namespace platform {

// The desktop's handling of files: opening one with its default application, and the icon
// the desktop shows for it. Tests put their own in its place to see what would be opened.
class Workspace : public QObject {
    Q_OBJECT

public:
    explicit Workspace(QObject* parent = nullptr);

    // Hands the item to the desktop's default application for its type; false when the
    // desktop could not start one.
    virtual bool open(const QUrl& url);

    // The icon theme's icon for the type of the file or folder at `path`; a null icon when
    // the theme has none for it, not even a generic one.
    static QIcon iconFor(const QString& path);
};

} // namespace platform
