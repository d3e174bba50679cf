#include "shell/glossary/HelpButton.h"

#include "shell/QtText.h"
#include "shell/design/Icon.h"
#include "shell/glossary/GlossaryPopoverView.h"

namespace ombrel {

HelpButton::HelpButton(GlossaryTopic topic, QWidget* parent) : QToolButton(parent), m_topic(topic) {
    setObjectName(QStringLiteral("help.") + toQt(rawValue(topic)));
    setIcon(themeIcon(QStringLiteral("help")));
    setIconSize({15, 15});
    setFocusPolicy(Qt::TabFocus);
    setToolTip(tr("What is %1?").arg(title(topic)));
    setAccessibleName(toolTip());
    connect(this, &QToolButton::clicked, this, &HelpButton::present);
}

void HelpButton::present() {
    auto* popover = new GlossaryPopoverView(m_topic, this);
    m_isPresented = true;
    connect(popover, &QObject::destroyed, this, [this] { m_isPresented = false; });
    popover->showAt(this);
}

} // namespace ombrel
