#include "SingleInstance.h"

#include "RuntimeFolder.h"

#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>

namespace platform {

namespace {

const QByteArray kActivate = QByteArrayLiteral("activate\n");

// The folder the disk-image tool mounts in, found the same way: a launch whose environment
// lacks the runtime folder still finds the first instance, and nobody else can reach the
// socket or take the lock.
QString runtimeFolder() {
    std::string error;
    return QFile::decodeName(platform::privateRuntimeFolder(error).c_str());
}

} // namespace

SingleInstance::SingleInstance(const QString& name, QObject* parent) : QObject(parent) {
    const QString folder = runtimeFolder();
    if (folder.isEmpty()) {
        // Nowhere safe for a socket: run, but unfindable.
        m_primary = true;
        return;
    }
    // A leading dot: never the name of a mount point in the same folder.
    m_socketPath = QDir(folder).filePath(QStringLiteral(".%1.instance").arg(name));
    // Two launches at the same moment must not both find no one and both start.
    QLockFile lock(m_socketPath + QStringLiteral(".lock"));
    lock.lock();
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
    socket.write(kActivate);
    socket.waitForBytesWritten(1000);
    socket.disconnectFromServer();
    return true;
}

void SingleInstance::listen() {
    // Nobody answered, so a socket file left there belongs to a process that died.
    QLocalServer::removeServer(m_socketPath);
    auto* server = new QLocalServer(this);
    server->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server->listen(m_socketPath)) {
        // Without the socket this process still runs; it just cannot be found by the next.
        delete server;
        return;
    }
    m_server = server;
    connect(server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* client = m_server->nextPendingConnection()) {
            connect(client, &QLocalSocket::readyRead, this, [this, client] {
                if (client->readAll().contains(kActivate.trimmed()))
                    emit activationRequested();
            });
            connect(client, &QLocalSocket::disconnected, client, &QObject::deleteLater);
        }
    });
}

} // namespace platform
