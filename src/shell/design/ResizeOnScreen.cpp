#include "shell/design/ResizeOnScreen.h"

#include <QScreen>
#include <QWidget>

namespace ombrel {

void resizeOnScreen(QWidget& window, QSize size) {
    const QSize frame(16, 48); // what a desktop puts around it, about
    window.resize(size.boundedTo(window.screen()->availableSize() - frame));
}

} // namespace ombrel
