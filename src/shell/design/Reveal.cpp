#include "shell/design/Reveal.h"

#include <QCoreApplication>
#include <QScrollArea>
#include <QTimer>

namespace ombrel {

void focusAndReveal(QWidget* added) {
    QTimer::singleShot(0, added, [added] {
        added->setFocus(Qt::TabFocusReason);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
        for (QWidget* around = added->parentWidget(); around; around = around->parentWidget()) {
            if (auto* area = qobject_cast<QScrollArea*>(around)) {
                area->ensureWidgetVisible(added);
            }
        }
    });
}

} // namespace ombrel
