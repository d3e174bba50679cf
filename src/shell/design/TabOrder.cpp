#include "shell/design/TabOrder.h"

#include <QLayout>
#include <QScrollArea>

namespace ombrel {

namespace {

void collect(QList<QWidget*>& controls, QLayout& layout);

void collect(QList<QWidget*>& controls, QWidget& widget) {
    if (widget.focusPolicy() & Qt::TabFocus) {
        controls.append(&widget);
    }
    const auto* area = qobject_cast<QScrollArea*>(&widget);
    if (area && area->widget()) {
        collect(controls, *area->widget());
    } else if (widget.layout()) {
        collect(controls, *widget.layout());
    }
}

void collect(QList<QWidget*>& controls, QLayout& layout) {
    for (int i = 0; i < layout.count(); ++i) {
        QLayoutItem* item = layout.itemAt(i);
        if (item->widget()) {
            collect(controls, *item->widget());
        } else if (item->layout()) {
            collect(controls, *item->layout());
        }
    }
}

} // namespace

void orderTabsByLayout(QWidget& whole) {
    QList<QWidget*> controls;
    collect(controls, whole);
    for (qsizetype i = 1; i < controls.size(); ++i) {
        QWidget::setTabOrder(controls[i - 1], controls[i]);
    }
}

} // namespace ombrel
