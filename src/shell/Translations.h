#pragma once

class QLocale;

namespace ombrel {

// Shows texts in the language of the locale that comes first in its list and has a file
// translations/ombrel-studio_<locale>.qm in the resource folder; without one, and what a file
// leaves out, stays English. Called once, when the QApplication stands and shows nothing yet.
void installTranslations(const QLocale& locale);

} // namespace ombrel
