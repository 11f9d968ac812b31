#pragma once

#include <QString>

// The origins registry's file at the vault's root.
inline const QString kOriginsRegistryName = QStringLiteral(".morvanta-origins.json");
// The new registry is written here first and then renamed over the old one; a draft left by
// a crash is removed when the vault is next opened.
inline const QString kOriginsDraftName = QStringLiteral(".morvanta-origins.json.partial");
// A copy on its way in or out is written under this prefix and renamed to its name only
// when complete; one left by a crash is removed when the vault is next opened.
inline const QString kStagingPrefix = QStringLiteral(".morvanta-staging-");

// Names no item may take: the registry and its draft, staging copies, and the housekeeping
// names of other systems that the list never shows (an item under one would be out of reach).
bool isReservedName(const QString& name);
