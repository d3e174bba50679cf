#include "shell/flow/FormField.h"

#include "shell/design/ElidedLabel.h"
#include "shell/design/Spacing.h"

#include <QVBoxLayout>

namespace ombrel {

QWidget* makeFormField(const QString& label, QWidget* control) {
    auto* field = new QWidget;
    auto* column = new QVBoxLayout(field);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::tight);
    column->addWidget(new ElidedLabel(label, TextRole::caption, TextLabel::Ink::secondary));
    column->addWidget(control);
    return field;
}

QVBoxLayout* makeInspectorColumn(QWidget* page) {
    page->setProperty("page", "true");
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(spacing::medium, spacing::large, spacing::medium, spacing::large);
    column->setSpacing(spacing::medium);
    return column;
}

} // namespace ombrel
