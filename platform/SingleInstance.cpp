#include "SingleInstance.h"

#include "FileSupport.h"
#include "RuntimeFolder.h"

#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QPointer>

#include <fcntl.h>
#include <sys/file.h>

namespace platform {

namespace {

// One request per line: "activate" or "lock"; a lock is answered with "locked" or with
// "failed" and the reason.
const QByteArray kActivate = QByteArrayLiteral("activate");
const QByteArray kLock = QByteArrayLiteral("lock");
const QByteArray kLocked = QByteArrayLiteral("locked");
const QByteArray kFailed = QByteArrayLiteral("failed ");
// A lock first lets the work under way roll back, which is bounded but not instant.
constexpr int kLockAnswerTimeoutMs = 120000;

// The folder the disk-image tool mounts in, found the same way: a launch whose environment
// lacks the runtime folder still finds the first instance, and nobody else can reach the
// socket or take the lock.
QString runtimeFolder() {
    std::string error;
    return QFile::decodeName(platform::privateRuntimeFolder(error).c_str());
}

// Empty when there is nowhere safe for a socket.
QString socketPathFor(const QString& name) {
    const QString folder = runtimeFolder();
    // A leading dot: never the name of a mount point in the same folder.
    return folder.isEmpty() ? QString()
                            : QDir(folder).filePath(QStringLiteral(".%1.instance").arg(name));
}

} // namespace

SingleInstance::SingleInstance(const QString& name, QObject* parent) : QObject(parent) {
    m_socketPath = socketPathFor(name);
    if (m_socketPath.isEmpty()) {
        // Nowhere safe for a socket: run, but unfindable.
        m_primary = true;
        return;
    }
    // Two launches at the same moment must not both find no one and both start. The kernel
    // drops the lock with the process, so a crash leaves nothing stale; the file stays (an
    // unlink could race a launch that opened it) and nothing is ever written or synced to it.
    // Not named ".lock": versions before this one take that name for a QLockFile, and would
    // wait for a file like this one to grow old.
    const ScopedFd lock(
        ::open(QFile::encodeName(m_socketPath + QStringLiteral(".launch")).constData(),
               O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (lock.get() >= 0)
        ::flock(lock.get(), LOCK_EX);
    m_primary = !signalRunningInstance();
    if (m_primary)
        listen();
}

SingleInstance::~SingleInstance() {
    if (m_server)
        m_server->close();
}

bool SingleInstance::signalRunningInstance() const {
    QLocalSocket socket;
    socket.connectToServer(m_socketPath);
    if (!socket.waitForConnected(1000))
        return false;
    socket.write(kActivate + '\n');
    socket.waitForBytesWritten(1000);
    socket.disconnectFromServer();
    return true;
}

void SingleInstance::listen() {
    // Nobody answered, so a socket file left there belongs to a process that died.
    QLocalServer::removeServer(m_socketPath);
    // The folder is the user's own and closed to everyone else, which keeps the socket theirs
    // too; asking Qt to restrict the socket as well would make and remove a folder around it
    // on every start, and wait for the disk where the folder is not in memory.
    auto* server = new QLocalServer(this);
    if (!server->listen(m_socketPath)) {
        // Without the socket this process still runs; it just cannot be found by the next.
        delete server;
        return;
    }
    m_server = server;
    connect(server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* client = m_server->nextPendingConnection()) {
            connect(client, &QLocalSocket::readyRead, this, [this, client] {
                const QPointer<QLocalSocket> alive(client);
                while (alive && client->canReadLine()) {
                    const QByteArray reply = answer(client->readLine().trimmed());
                    if (alive && !reply.isEmpty()) {
                        client->write(reply + '\n');
                        client->flush();
                    }
                }
            });
            connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
        }
    });
}

QByteArray SingleInstance::answer(const QByteArray& request) {
    if (request == kActivate) {
        emit activationRequested();
        return {};
    }
    if (request != kLock)
        return {};
    const QString failure =
        m_lockHandler ? m_lockHandler() : QStringLiteral("Nothing here can lock.");
    if (failure.isEmpty())
        return kLocked;
    // One line, whatever the reason held.
    return kFailed + failure.simplified().toUtf8();
}

SingleInstance::LockAnswer SingleInstance::requestLock(const QString& name) {
    const QString path = socketPathFor(name);
    if (path.isEmpty())
        return {};
    QLocalSocket socket;
    socket.connectToServer(path);
    if (!socket.waitForConnected(1000))
        return {};
    socket.write(kLock + '\n');
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(kLockAnswerTimeoutMs))
            return {LockAnswer::State::failed, QStringLiteral("Morvanta did not answer.")};
    }
    const QByteArray reply = socket.readLine().trimmed();
    if (reply == kLocked)
        return {LockAnswer::State::locked, {}};
    if (reply.startsWith(kFailed))
        return {LockAnswer::State::failed, QString::fromUtf8(reply.mid(kFailed.size()))};
    return {LockAnswer::State::failed, QStringLiteral("Morvanta did not answer.")};
}

} // namespace platform
