#pragma once

#include "engine/HDIUtil.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>

namespace testsupport {

// Why gocryptfs on FUSE cannot run here, or empty when it can.
QString fuseUnavailableReason();

// The real disk-image tool of the build, and the same tool with a cheap key derivation.
QString shippedToolPath();
QString fastToolPath();
HDIUtilRunner fastToolRunner();

// A test's own runtime folder, so that its mounts live apart from everything else; it is
// put back, and anything still mounted in it unmounted, when the test ends.
class ScopedRuntimeDir {
public:
    ScopedRuntimeDir();
    ~ScopedRuntimeDir();
    QString path() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
    QByteArray m_previous; // null when there was none
};

// Mount points currently in the mount table below `folder`.
QStringList mountsBelow(const QString& folder);

// The gocryptfs daemons whose arguments name `path` (a vault, or a folder holding vaults).
QList<int> gocryptfsDaemonsServing(const QString& path);

// Processes whose command line or environment holds `secret`.
QStringList processesHolding(const QByteArray& secret);
// Files below `folder` whose bytes hold `secret`.
QStringList filesHolding(const QString& folder, const QByteArray& secret);

} // namespace testsupport

// Skips a test that needs FUSE where there is none; fails it instead when the run demands
// FUSE (MORVANTA_REQUIRE_FUSE=1, as CI sets), so that a green run really exercised it.
#define REQUIRE_FUSE()                                                                          \
    do {                                                                                        \
        const QString why = testsupport::fuseUnavailableReason();                              \
        if (!why.isEmpty()) {                                                                   \
            if (qEnvironmentVariableIntValue("MORVANTA_REQUIRE_FUSE") == 1)                     \
                QFAIL(qPrintable("FUSE is required but unavailable: " + why));                 \
            QSKIP(qPrintable("needs gocryptfs on FUSE: " + why));                              \
        }                                                                                       \
    } while (false)
