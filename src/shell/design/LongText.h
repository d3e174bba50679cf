#pragma once

#include <QString>

namespace ombrel {

// The text with places, that are not seen, where a word without end may be broken, so that a
// wrapping label needn't be as wide as the word.
QString breakable(const QString& text);

// What a tool tip shows of a text of the user's: as it is, never as HTML, wrapped, and not without
// end.
QString toolTipText(const QString& text);

// What a menu or a button shows of it: one line, not without end, with every & that is in it.
QString actionText(const QString& text);

} // namespace ombrel
