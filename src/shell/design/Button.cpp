#include "shell/design/Button.h"

#include "shell/design/Icon.h"
#include "shell/design/Spacing.h"

namespace ombrel {

QPushButton* makeButton(const QString& text, ButtonKind kind, QWidget* parent) {
    auto* button = new QPushButton(text, parent);
    switch (kind) {
    case ButtonKind::secondary:
        break;
    case ButtonKind::primary:
        button->setProperty("kind", "primary");
        break;
    case ButtonKind::danger:
        button->setProperty("kind", "danger");
        break;
    case ButtonKind::dangerFill:
        button->setProperty("kind", "dangerFill");
        break;
    case ButtonKind::plain:
        button->setProperty("kind", "plain");
        break;
    }
    button->setFocusPolicy(Qt::TabFocus);
    button->setAccessibleName(text);
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    return button;
}

QToolButton* makeIconButton(const QString& name, const QString& what, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setIcon(themeIcon(name));
    button->setIconSize({spacing::icon, spacing::icon});
    button->setToolTip(what);
    button->setAccessibleName(what);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

} // namespace ombrel
