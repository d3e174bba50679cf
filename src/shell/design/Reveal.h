#pragma once

class QWidget;

namespace ombrel {

// Gives the keyboard to what has just been added to a page, and scrolls it into view when it has
// its place there.
void focusAndReveal(QWidget* added);

} // namespace ombrel
