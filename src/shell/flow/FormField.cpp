#include "shell/flow/FormField.h"

#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QVBoxLayout>

namespace ombrel {

QWidget* makeFormField(const QString& label, QWidget* control) {
    auto* field = new QWidget;
    auto* column = new QVBoxLayout(field);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::tight);
    auto* text = new TextLabel(label, TextRole::caption, TextLabel::Ink::secondary);
    text->setBuddy(control);
    column->addWidget(text);
    column->addWidget(control);
    return field;
}

QVBoxLayout* makeInspectorColumn(QWidget* page) {
    page->setProperty("page", "true");
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(spacing::large, spacing::large, spacing::large, spacing::large);
    column->setSpacing(spacing::medium);
    return column;
}

} // namespace ombrel
