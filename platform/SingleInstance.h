#pragma once

#include <QObject>
#include <QString>

#include <functional>

class QLocalServer;

namespace platform {

// Keeps Morvanta to one process per user: the vault has one engine, and a second one would
// fight the first over the mount. A later launch finds the first through a socket in the
// user's private runtime folder, asks it to come forward and stops. The same socket carries
// a lock request from the command line, which the running instance answers.
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

    // Locks for a lock request and gives the reason it failed, or nothing when the vault is
    // locked (also when it was locked already).
    using LockHandler = std::function<QString()>;
    void setLockHandler(LockHandler handler) { m_lockHandler = std::move(handler); }

    struct LockAnswer {
        enum class State { notRunning, locked, failed };
        State state = State::notRunning;
        QString reason; // why the lock failed
    };
    // Asks the running instance, if any, to lock, and waits for its answer. Never becomes
    // the running instance itself.
    static LockAnswer requestLock(const QString& name = QStringLiteral("morvanta"));

signals:
    // Another launch wants the window of this one.
    void activationRequested();

private:
    bool signalRunningInstance() const;
    void listen();
    QByteArray answer(const QByteArray& request);

    QString m_socketPath;
    bool m_primary = false;
    QLocalServer* m_server = nullptr;
    LockHandler m_lockHandler;
};

} // namespace platform
