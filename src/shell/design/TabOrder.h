#pragma once

class QWidget;

namespace ombrel {

// Lets the Tab key go through the controls of a widget as its layouts place them: from top to
// bottom, and along each row. Qt would come to controls that were made later at the very end.
// To be called by `focusNextPrevChild`, before each move.
void orderTabsByLayout(QWidget& whole);

} // namespace ombrel
