#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace testsupport {

enum class Detail {
    Content,   // files by size and content hash, links by target, folders as such
    Everything // also the root itself as ".", modes, modification times, extended attributes
               // and ACLs, hard links and holes
};

// Every entry below `root`, described in the detail a faithful copy must keep.
QMap<QString, QByteArray> treeOf(const QString& root, Detail detail = Detail::Content);

QByteArray readFile(const QString& path);
bool writeFile(const QString& path, const QByteArray& bytes);

// A small tmpfs at `path` for the life of the object, for a file system that runs full, turns
// read-only or stands for a drive. Only root may mount one: check mounted().
class ScopedTmpfs {
public:
    explicit ScopedTmpfs(const QString& path, const QByteArray& options = "size=8m");
    ~ScopedTmpfs();
    ScopedTmpfs(const ScopedTmpfs&) = delete;
    ScopedTmpfs& operator=(const ScopedTmpfs&) = delete;
    bool mounted() const { return m_mounted; }
    bool setReadOnly(bool readOnly);

private:
    QByteArray m_path;
    QByteArray m_options;
    bool m_mounted = false;
};

// Fills the file system holding `folder` until not one more byte fits.
void fillUp(const QString& folder);

} // namespace testsupport
