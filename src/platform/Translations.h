#pragma once

#include <QLocale>

// Loads Corvella's texts in the user's language, and Qt's own (standard buttons, the file dialog),
// for the application object. A language Corvella has no texts for falls back to English, whose
// file only carries the plural forms of counted texts. Answers whether the language was found.
bool installTranslations(const QLocale& locale = QLocale());
