#pragma once

#include <QString>
#include <QWidget>

namespace ombrel {

// Gives a control the name by which tests find it and the name by which a screen reader tells it.
template <class Widget>
Widget* named(Widget* widget, const QString& objectName, const QString& accessibleName) {
    widget->setObjectName(objectName);
    widget->setAccessibleName(accessibleName);
    return widget;
}

} // namespace ombrel
