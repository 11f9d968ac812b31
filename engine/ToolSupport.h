#pragma once

// What the engine's operations share about talking to the disk-image tool.

#include "HDIUtil.h"

// The volume name of the vault and of its backups.
inline const QString kVolumeName = QStringLiteral("MorvantaVault");

// A failed run is described by what it wrote to standard error, or else to standard output.
inline QString failureMessage(const HDIUtilResult& result) {
    return result.stderr.isEmpty() ? result.stdout : result.stderr;
}
