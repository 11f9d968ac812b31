#include "SessionWatcher.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>

namespace platform {

namespace {

const QString kLogin1 = QStringLiteral("org.freedesktop.login1");
const QString kLogin1Path = QStringLiteral("/org/freedesktop/login1");
const QString kManager = QStringLiteral("org.freedesktop.login1.Manager");
const QString kSession = QStringLiteral("org.freedesktop.login1.Session");

} // namespace

SessionWatcher::SessionWatcher(QDBusConnection systemBus, QDBusConnection sessionBus,
                               QObject* parent)
    : QObject(parent), m_systemBus(std::move(systemBus)), m_sessionBus(std::move(sessionBus)) {
    if (m_systemBus.isConnected()) {
        m_systemBus.connect(kLogin1, kLogin1Path, kManager, QStringLiteral("PrepareForSleep"),
                            this, SLOT(prepareForSleep(bool)));
        takeSleepInhibitor();

        // Our own session only: a Lock sent to another session is not ours to follow.
        const QDBusReply<QDBusObjectPath> session = m_systemBus.call(QDBusMessage::createMethodCall(
            kLogin1, kLogin1Path, kManager, QStringLiteral("GetSessionByPID"))
            << quint32(QCoreApplication::applicationPid()));
        if (session.isValid()) {
            m_systemBus.connect(kLogin1, session.value().path(), kSession, QStringLiteral("Lock"),
                                this, SLOT(sessionLocked()));
        }
    }
    if (m_sessionBus.isConnected()) {
        // KDE and others use the freedesktop name, GNOME its own; both say the same.
        for (const auto& [path, interface] :
             {std::pair{QStringLiteral("/org/freedesktop/ScreenSaver"),
                        QStringLiteral("org.freedesktop.ScreenSaver")},
              std::pair{QStringLiteral("/ScreenSaver"), QStringLiteral("org.freedesktop.ScreenSaver")},
              std::pair{QStringLiteral("/org/gnome/ScreenSaver"),
                        QStringLiteral("org.gnome.ScreenSaver")}}) {
            m_sessionBus.connect(QString(), path, interface, QStringLiteral("ActiveChanged"), this,
                                 SLOT(screensaverActiveChanged(bool)));
        }
    }
}

void SessionWatcher::takeSleepInhibitor() {
    const QDBusReply<QDBusUnixFileDescriptor> reply = m_systemBus.call(
        QDBusMessage::createMethodCall(kLogin1, kLogin1Path, kManager, QStringLiteral("Inhibit"))
        << QStringLiteral("sleep") << QStringLiteral("Morvanta")
        << QStringLiteral("Lock the vault before sleeping") << QStringLiteral("delay"));
    m_inhibitor = reply.isValid() ? reply.value() : QDBusUnixFileDescriptor();
}

void SessionWatcher::prepareForSleep(bool sleeping) {
    if (!sleeping) {
        // Awake again: be ready for the next sleep.
        if (!m_inhibitor.isValid())
            takeSleepInhibitor();
        return;
    }
    emit lockRequested();
    // Closing our descriptor tells logind it may go on.
    m_inhibitor = QDBusUnixFileDescriptor();
}

void SessionWatcher::sessionLocked() { emit lockRequested(); }

void SessionWatcher::screensaverActiveChanged(bool active) {
    if (active)
        emit lockRequested();
}

} // namespace platform
