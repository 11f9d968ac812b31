// The vault's top-level entries as the screens list them.

#include "OriginsRegistry.h"
#include "engine/VaultManager.h"
#include "platform/Files.h"

#include <QCollator>
#include <QFile>
#include <QMimeDatabase>
#include <QSet>

#include <algorithm>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

// Never shown, whatever they are: volume housekeeping of other systems, and the registry.
const QSet<QString> kExcludedNames = {
    QStringLiteral(".DS_Store"),        QStringLiteral(".Trashes"),
    QStringLiteral(".fseventsd"),       QStringLiteral(".Spotlight-V100"),
    QStringLiteral(".TemporaryItems"),  QStringLiteral(".DocumentRevisions-V100"),
    kOriginsRegistryName,
};

QString kindOf(const QString& path) {
    static const QMimeDatabase mimeTypes;
    const QString comment = mimeTypes.mimeTypeForFile(path).comment();
    return comment.isEmpty() ? QStringLiteral("\u2014") : comment;
}

} // namespace

bool isReservedName(const QString& name) {
    return kExcludedNames.contains(name) || name == kOriginsDraftName || name.startsWith(kStagingPrefix);
}

void VaultManager::refreshItems() {
    if (m_mountPoint.isEmpty()) {
        setItems({});
        return;
    }
    QStringList names;
    std::error_code error;
    fs::directory_iterator it(QFile::encodeName(vaultRoot()).toStdString(), error);
    for (; !error && it != fs::directory_iterator(); it.increment(error)) {
        const QString name = QFile::decodeName(it->path().filename().c_str());
        if (!isReservedName(name))
            names.append(name);
    }
    if (error) {
        setItems({});
        return;
    }

    QCollator collator;
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::stable_sort(names.begin(), names.end(), [&collator](const QString& a, const QString& b) {
        return collator.compare(a, b) < 0;
    });

    QList<VaultItem> items;
    items.reserve(names.size());
    for (const QString& name : names)
        items.append(makeItem(QUrl::fromLocalFile(vaultRoot() + QLatin1Char('/') + name)));
    setItems(items);
}

VaultItem VaultManager::makeItem(const QUrl& url) const {
    const QString path = url.toLocalFile();
    VaultItem item;
    item.url = url;
    item.name = url.fileName();
    item.size = sizeOfItem(url);
    item.kind = platform::existsNoFollow(QFile::encodeName(path).toStdString())
                    ? kindOf(path)
                    : QStringLiteral("\u2014");
    if (const auto created = platform::creationTime(QFile::encodeName(path).toStdString())) {
        item.dateAdded = QDateTime::fromMSecsSinceEpoch(qint64(created->tv_sec) * 1000 +
                                                        created->tv_nsec / 1000000);
    }
    return item;
}

// Logical sizes: a folder counts the bytes of every regular file below it.
std::optional<qint64> VaultManager::sizeOfItem(const QUrl& url) const {
    const std::string path = QFile::encodeName(url.toLocalFile()).toStdString();
    if (!platform::isDirectoryNoFollow(path))
        return platform::entrySize(path);
    return platform::countTree(path).bytes;
}
