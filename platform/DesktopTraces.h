#pragma once

#include <QString>
#include <QStringList>

namespace platform {

// What the desktop remembers of files it has seen: thumbnails in the freedesktop cache, the
// recently-used list (GTK's recently-used.xbel, KDE's RecentDocuments). Once the vault is
// locked, any of it that points into the vault gives away names and pictures of its
// contents, so it is removed. Returns how many traces were removed.
int forgetTracesBelow(const QStringList& folders);

} // namespace platform
