#pragma once

#include <QString>

// The origins registry's file at the vault's root. The name is reserved: no item may take
// it, or the registry would overwrite the item.
inline const QString kOriginsRegistryName = QStringLiteral(".morvanta-origins.json");
