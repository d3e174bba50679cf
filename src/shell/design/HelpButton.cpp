#include "shell/design/HelpButton.h"

#include "shell/design/Icon.h"

#include <utility>

namespace ombrel {

HelpButton::HelpButton(const QString& what, std::function<void(QWidget*)> show, QWidget* parent)
    : QToolButton(parent) {
    setIcon(themeIcon(QStringLiteral("help")));
    setIconSize({15, 15});
    setFocusPolicy(Qt::TabFocus);
    setToolTip(tr("What is “%1”?").arg(what));
    setAccessibleName(tr("Help on %1").arg(what));
    connect(this, &QToolButton::clicked, this, [this, told = std::move(show)] { told(this); });
}

} // namespace ombrel
