#include "Trees.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <algorithm>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace testsupport {

namespace {

// Attribute names and values, sorted; ACLs are attributes too.
QByteArray attributesOf(const QByteArray& path) {
    QByteArray names(65536, '\0'), value(65536, '\0');
    const ssize_t length = ::llistxattr(path.constData(), names.data(), names.size());
    QList<QByteArray> described;
    for (const QByteArray& name : names.left(qMax<ssize_t>(length, 0)).split('\0')) {
        const ssize_t size =
            name.isEmpty() ? -1 : ::lgetxattr(path.constData(), name.constData(), value.data(), value.size());
        if (size >= 0)
            described.append(name + "=" + value.left(size).toHex());
    }
    std::sort(described.begin(), described.end());
    return " xattrs [" + described.join(' ') + "]";
}

QByteArray describe(const QString& path, Detail detail, QMap<QPair<dev_t, ino_t>, QString>& links,
                    const QString& relative) {
    const QByteArray local = QFile::encodeName(path);
    struct stat info {};
    if (::lstat(local.constData(), &info) != 0)
        return "<missing>";
    if (S_ISLNK(info.st_mode)) {
        QByteArray target(4096, '\0');
        return "link -> " + target.left(qMax<ssize_t>(::readlink(local.constData(), target.data(), target.size()), 0));
    }
    if (!S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode))
        return "special"; // never opened: a pipe would hang the reader
    QByteArray text = S_ISDIR(info.st_mode) ? "folder" : "file";
    if (detail != Detail::Content)
        text += " " + QByteArray::number(info.st_mode & 07777, 8) + " mtime " +
                QByteArray::number(qint64(info.st_mtim.tv_sec)) + "." + QByteArray::number(qint64(info.st_mtim.tv_nsec));
    if (detail == Detail::Everything) {
        text += attributesOf(local);
        const QString first = links.value({info.st_dev, info.st_ino}, relative);
        links.insert({info.st_dev, info.st_ino}, first);
        if (S_ISREG(info.st_mode) && info.st_nlink > 1)
            text += " linked with " + first.toUtf8();
        if (S_ISREG(info.st_mode) && info.st_blocks * 512 < info.st_size / 2)
            text += " sparse";
    }
    if (S_ISDIR(info.st_mode))
        return text;
    const QByteArray bytes = readFile(path);
    return text + " " + QByteArray::number(bytes.size()) + " bytes sha256 " +
           QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

} // namespace

QMap<QString, QByteArray> treeOf(const QString& root, Detail detail) {
    QMap<QString, QByteArray> tree;
    QMap<QPair<dev_t, ino_t>, QString> links;
    if (detail != Detail::Content)
        tree.insert(QStringLiteral("."), describe(root, detail, links, QStringLiteral(".")));
    if (!QFileInfo(root).isDir() || QFileInfo(root).isSymLink())
        return tree;
    QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    QStringList relatives;
    while (it.hasNext())
        relatives.append(QDir(root).relativeFilePath(it.next()));
    // Sorted, so that the first name of a hard-linked file is the same on both sides.
    relatives.sort();
    for (const QString& relative : relatives)
        tree.insert(relative, describe(QDir(root).filePath(relative), detail, links, relative));
    return tree;
}

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

bool writeFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

ScopedTmpfs::ScopedTmpfs(const QString& path, const QByteArray& options)
    : m_path(QFile::encodeName(path)), m_options(options) {
    QDir().mkpath(path);
    m_mounted = ::mount("none", m_path.constData(), "tmpfs", 0, m_options.constData()) == 0;
}

ScopedTmpfs::~ScopedTmpfs() {
    if (m_mounted)
        ::umount2(m_path.constData(), MNT_DETACH);
}

bool ScopedTmpfs::setReadOnly(bool readOnly) {
    return ::mount("none", m_path.constData(), nullptr, MS_REMOUNT | (readOnly ? MS_RDONLY : 0),
                   m_options.constData()) == 0;
}

void fillUp(const QString& folder) {
    QFile filler(folder + "/filler");
    if (!filler.open(QIODevice::WriteOnly))
        return;
    for (const int piece : {4096, 1}) { // then the last bytes one by one
        while (filler.write(QByteArray(piece, 'f')) == piece && filler.flush()) {
        }
    }
}

} // namespace testsupport
