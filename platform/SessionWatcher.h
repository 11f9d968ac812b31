#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QObject>

namespace platform {

// Tells when the vault should lock because the user is leaving: the machine is about to
// suspend or hibernate (logind's PrepareForSleep), or the session's screen locks (logind's
// session Lock, the desktop screensaver's ActiveChanged). Before sleep, logind waits for a
// delay inhibitor this object holds, so that `lockRequested` is handled completely before
// the machine sleeps. Without logind or a session bus it simply never asks.
class SessionWatcher : public QObject {
    Q_OBJECT

public:
    SessionWatcher(QDBusConnection systemBus, QDBusConnection sessionBus,
                   QObject* parent = nullptr);

    bool holdsSleepInhibitor() const { return m_inhibitor.isValid(); }

signals:
    // Handle it before returning: the sleep inhibitor is released right after.
    void lockRequested();

private slots:
    void prepareForSleep(bool sleeping);
    void sessionLocked();
    void screensaverActiveChanged(bool active);

private:
    void takeSleepInhibitor();

    QDBusConnection m_systemBus;
    QDBusConnection m_sessionBus;
    QDBusUnixFileDescriptor m_inhibitor;
};

} // namespace platform
