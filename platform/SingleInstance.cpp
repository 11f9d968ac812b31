#include "SingleInstance.h"

#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QStandardPaths>

#include <unistd.h>

namespace platform {

namespace {

const QByteArray kActivate = QByteArrayLiteral("activate\n");

QString runtimeFolder() {
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return folder;
}

} // namespace

SingleInstance::SingleInstance(const QString& name, QObject* parent)
    : QObject(parent),
      m_socketPath(QDir(runtimeFolder())
                       .filePath(QStringLiteral("%1-%2.instance").arg(name).arg(::getuid()))) {
    // Two launches at the same moment must not both find no one and both start.
    QLockFile lock(m_socketPath + QStringLiteral(".lock"));
    lock.lock();
    if (!signalRunningInstance())
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
