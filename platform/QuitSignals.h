#pragma once

#include <QObject>

namespace platform {

// Turns SIGTERM, SIGINT and SIGHUP (logout, `kill`, Ctrl+C in a terminal) into an orderly
// quit of the application, so that an open vault is locked on the way out.
void quitApplicationOnTerminationSignals();

} // namespace platform
