#include "Trees.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

namespace testsupport {

namespace {

QByteArray describe(const QString& path, Detail detail) {
    const QByteArray local = QFile::encodeName(path);
    struct stat info {};
    if (::lstat(local.constData(), &info) != 0)
        return "<missing>";
    const QByteArray metadata =
        detail == Detail::Content
            ? QByteArray()
            : " " + QByteArray::number(info.st_mode & 07777, 8) + " mtime " +
                  QByteArray::number(qint64(info.st_mtim.tv_sec)) + "." +
                  QByteArray::number(qint64(info.st_mtim.tv_nsec));
    if (S_ISLNK(info.st_mode)) {
        QByteArray target(4096, '\0');
        const ssize_t n = ::readlink(local.constData(), target.data(), target.size());
        return "link -> " + target.left(n < 0 ? 0 : n);
    }
    if (S_ISDIR(info.st_mode))
        return "folder" + metadata;
    const QByteArray bytes = readFile(path);
    return "file" + metadata + " " + QByteArray::number(bytes.size()) +
           " bytes sha256 " + QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
}

} // namespace

QMap<QString, QByteArray> treeOf(const QString& root, Detail detail) {
    QMap<QString, QByteArray> tree;
    if (detail == Detail::ModesAndTimes)
        tree.insert(QStringLiteral("."), describe(root, detail));
    if (!QFileInfo(root).isDir() || QFileInfo(root).isSymLink())
        return tree;
    QDirIterator it(root, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        tree.insert(QDir(root).relativeFilePath(path), describe(path, detail));
    }
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

} // namespace testsupport
