#include "FuseHarness.h"

#include "platform/Process.h"
#include "platform/ToolLocation.h"
#include "support/Trees.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <fcntl.h>
#include <unistd.h>

namespace testsupport {

QString fuseUnavailableReason() {
    for (const char* tool : {"/usr/bin/gocryptfs", "/usr/bin/fusermount3"}) {
        if (::access(tool, X_OK) != 0)
            return QStringLiteral("%1 is not installed").arg(QString::fromLatin1(tool));
    }
    const int fd = ::open("/dev/fuse", O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return QStringLiteral("/dev/fuse cannot be opened: %1").arg(qt_error_string(errno));
    ::close(fd);
    return {};
}

QString shippedToolPath() {
    return QString::fromStdString(platform::hdiutilProgramPath());
}

QString fastToolPath() {
    return QString::fromStdString(platform::executableDirectory() + "/morvanta-hdiutil-fastkdf");
}

HDIUtilRunner fastToolRunner() {
    return [](const QStringList& args, const std::optional<QString>& stdinText, const HDIUtilOutputLine& onLine) {
        return runHDIUtilProgram(fastToolPath(), args, stdinText, onLine);
    };
}

// A temporary folder is private (0700), as a runtime folder must be.
ScopedRuntimeDir::ScopedRuntimeDir() : m_previous(qgetenv("XDG_RUNTIME_DIR")) {
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_dir.path()));
}

ScopedRuntimeDir::~ScopedRuntimeDir() {
    // A failed test must not leave mounts behind for the next one.
    for (const QString& mountPoint : mountsBelow(m_dir.path()))
        platform::runProcess("/usr/bin/fusermount3", {"-u", "-z", mountPoint.toStdString()},
                             std::nullopt);
    if (m_previous.isNull())
        qunsetenv("XDG_RUNTIME_DIR");
    else
        qputenv("XDG_RUNTIME_DIR", m_previous);
}

QStringList mountsBelow(const QString& folder) {
    QStringList found;
    const QString prefix = QDir(folder).canonicalPath() + QLatin1Char('/');
    for (const QByteArray& line : readFile(QStringLiteral("/proc/self/mountinfo")).split('\n')) {
        QByteArray mountPoint = line.split(' ').value(4);
        mountPoint.replace("\\040", " ").replace("\\011", "\t").replace("\\012", "\n").replace("\\134", "\\");
        if (const QString path = QFile::decodeName(mountPoint); path.startsWith(prefix))
            found.append(path);
    }
    return found;
}

// Every process with its command line and environment.
void forEachProcess(const std::function<void(const QString& pid, const QByteArray& cmdline,
                                             const QByteArray& environ)>& visit) {
    for (const QString& pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        if (pid.toInt() > 0)
            visit(pid, readFile("/proc/" + pid + "/cmdline"), readFile("/proc/" + pid + "/environ"));
    }
}

QStringList processesHolding(const QByteArray& secret) {
    QStringList hits;
    forEachProcess([&](const QString& pid, const QByteArray& cmdline, const QByteArray& environ) {
        if (cmdline.contains(secret) || environ.contains(secret))
            hits.append(pid + ": " + QString::fromLocal8Bit(cmdline).replace(QChar(0), QChar(' ')));
    });
    return hits;
}

QList<int> gocryptfsDaemonsServing(const QString& path) {
    QList<int> pids;
    forEachProcess([&](const QString& pid, const QByteArray& cmdline, const QByteArray&) {
        if (cmdline.startsWith("/usr/bin/gocryptfs") && cmdline.contains(QFile::encodeName(path)))
            pids.append(pid.toInt());
    });
    return pids;
}

// FIFOs and sockets are not listed, so that reading cannot block.
QStringList filesHolding(const QString& folder, const QByteArray& secret) {
    QStringList hits;
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        if (file.open(QIODevice::ReadOnly) && file.readAll().contains(secret))
            hits.append(file.fileName());
    }
    return hits;
}

} // namespace testsupport
