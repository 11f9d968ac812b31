#pragma once

#include <QLocale>

// Installs Morvanta's texts in the locale's language, and Qt's own for the file pickers,
// where a translation exists; otherwise the English texts stay.
void installTranslation(const QLocale& locale = QLocale());
