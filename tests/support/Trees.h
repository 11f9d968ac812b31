#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace testsupport {

enum class Detail {
    Content,      // files by size and content hash, links by target, folders as such
    ModesAndTimes // also permission bits and modification times, and the root itself as "."
};

// Every entry below `root`, described in the detail a faithful copy must keep.
QMap<QString, QByteArray> treeOf(const QString& root, Detail detail = Detail::Content);

QByteArray readFile(const QString& path);
bool writeFile(const QString& path, const QByteArray& bytes);

} // namespace testsupport
