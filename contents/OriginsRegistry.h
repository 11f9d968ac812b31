#pragma once

#include <QString>

// The origins registry's file at the vault's root. The name is reserved: no item may take
// it, or the registry would overwrite the item.
inline const QString kOriginsRegistryName = QStringLiteral(".morvanta-origins.json");
// The new registry is written here first and then renamed over the old one; a draft left by
// a crash is removed when the vault is next opened.
inline const QString kOriginsDraftName = QStringLiteral(".morvanta-origins.json.partial");
