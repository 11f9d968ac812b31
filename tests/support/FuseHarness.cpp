#include "FuseHarness.h"

#include "platform/Process.h"
#include "platform/ToolLocation.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
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
    return QString::fromStdString(platform::executableDirectory() + "/morvanta-hdiutil");
}

QString fastToolPath() {
    return QString::fromStdString(platform::executableDirectory() + "/morvanta-hdiutil-fastkdf");
}

HDIUtilRunner fastToolRunner() {
    return [](const QStringList& args, const std::optional<QString>& stdinText, const HDIUtilOutputLine& onLine) {
        return runHDIUtilProgram(fastToolPath(), args, stdinText, onLine);
    };
}

HDIUtilRunner orphanedToolRunner() {
    return [](const QStringList& args, const std::optional<QString>& stdinText, const HDIUtilOutputLine& onLine) {
        // Not the last command, so the shell forks the tool rather than becoming it.
        const QStringList script{"-c", "\"$0\" \"$@\"; exit $?", fastToolPath()};
        return runHDIUtilProgram(QStringLiteral("/bin/sh"), script + args, stdinText, onLine);
    };
}

ScopedRuntimeDir::ScopedRuntimeDir()
    : m_previous(qgetenv("XDG_RUNTIME_DIR")), m_hadPrevious(qEnvironmentVariableIsSet("XDG_RUNTIME_DIR")) {
    QFile::setPermissions(m_dir.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                            QFileDevice::ExeOwner);
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_dir.path()));
}

ScopedRuntimeDir::~ScopedRuntimeDir() {
    // A failed test must not leave mounts behind for the next one.
    for (const QString& mountPoint : mountsBelow(m_dir.path()))
        platform::runProcess("/usr/bin/fusermount3", {"-u", "-z", mountPoint.toStdString()},
                             std::nullopt);
    if (m_hadPrevious)
        qputenv("XDG_RUNTIME_DIR", m_previous);
    else
        qunsetenv("XDG_RUNTIME_DIR");
}

QStringList mountsBelow(const QString& folder) {
    QFile file(QStringLiteral("/proc/self/mountinfo"));
    QStringList found;
    if (!file.open(QIODevice::ReadOnly))
        return found;
    const QString prefix = QDir(folder).canonicalPath() + QLatin1Char('/');
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() < 5)
            continue;
        QByteArray mountPoint = fields[4];
        mountPoint.replace("\\040", " ").replace("\\011", "\t").replace("\\012", "\n").replace("\\134", "\\");
        const QString path = QFile::decodeName(mountPoint);
        if (path.startsWith(prefix))
            found.append(path);
    }
    return found;
}

QStringList processesHolding(const QByteArray& secret) {
    QStringList hits;
    const QStringList pids = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString& pid : pids) {
        if (pid.toInt() <= 0)
            continue;
        for (const char* what : {"cmdline", "environ"}) {
            QFile file(QStringLiteral("/proc/%1/%2").arg(pid, QLatin1String(what)));
            if (file.open(QIODevice::ReadOnly) && file.readAll().contains(secret))
                hits.append(QStringLiteral("%1 (%2)").arg(pid, QLatin1String(what)));
        }
    }
    return hits;
}

QList<int> gocryptfsDaemonsServing(const QString& path) {
    QList<int> pids;
    for (const QString& pid : QDir("/proc").entryList(QDir::Dirs)) {
        QFile cmdline("/proc/" + pid + "/cmdline");
        if (pid.toInt() > 0 && cmdline.open(QIODevice::ReadOnly)) {
            const QByteArray line = cmdline.readAll();
            if (line.startsWith("/usr/bin/gocryptfs") && line.contains(QFile::encodeName(path)))
                pids.append(pid.toInt());
        }
    }
    return pids;
}

QStringList filesHolding(const QString& folder, const QByteArray& secret) {
    QStringList hits;
    QDirIterator it(folder, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        // Regular files only, opened so that nothing can block: a FIFO anywhere would
        // otherwise hang the scan.
        const int fd = ::open(QFile::encodeName(path), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
        struct stat info {};
        QFile file;
        if (fd >= 0 && ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) &&
            file.open(fd, QIODevice::ReadOnly, QFile::AutoCloseHandle)) {
            if (file.readAll().contains(secret))
                hits.append(path);
        } else if (fd >= 0) {
            ::close(fd);
        }
    }
    return hits;
}

} // namespace testsupport
