#pragma once

#include <QObject>
#include <QString>

class QLocalServer;

namespace platform {

// Keeps Morvanta to one process per user: the vault has one engine, and a second one would
// fight the first over the mount. A later launch finds the first through a socket in the
// user's private runtime folder, asks it to come forward and stops.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    // `name` tells apart the socket of one application; tests use names of their own.
    explicit SingleInstance(const QString& name = QStringLiteral("morvanta"),
                            QObject* parent = nullptr);
    ~SingleInstance() override;

    // True when this process is the one that runs; otherwise the running one has been asked
    // to come forward and this process should end.
    bool isPrimary() const { return m_primary; }
    QString socketPath() const { return m_socketPath; }

signals:
    // Another launch wants the window of this one.
    void activationRequested();

private:
    bool signalRunningInstance() const;
    void listen();

    QString m_socketPath;
    bool m_primary = false;
    QLocalServer* m_server = nullptr;
};

} // namespace platform
