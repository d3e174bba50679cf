#pragma once

#include <QString>

class QVBoxLayout;
class QWidget;

namespace ombrel {

// A label with its control below it, as one widget.
QWidget* makeFormField(const QString& label, QWidget* control);

// A column of sections for the inspector.
QVBoxLayout* makeInspectorColumn(QWidget* page);

} // namespace ombrel
