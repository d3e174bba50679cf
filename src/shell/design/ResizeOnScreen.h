#pragma once

#include <QSize>

class QWidget;

namespace ombrel {

// Gives a window that size, or as much of it as its screen has room for.
void resizeOnScreen(QWidget& window, QSize size);

} // namespace ombrel
