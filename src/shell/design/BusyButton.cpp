#include "shell/design/BusyButton.h"

#include "shell/design/Spacing.h"
#include "shell/design/Spinner.h"

namespace ombrel {

BusyButton::BusyButton(const QString& text, ButtonKind kind, QWidget* parentWidget)
    : QPushButton(text, parentWidget), m_label(text), m_spinner(new Spinner(spacing::icon, this)) {
    if (kind == ButtonKind::primary) {
        setProperty("kind", "primary");
    }
    setAccessibleName(text);
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAutoDefault(false);
    m_spinner->hide();
}

void BusyButton::setBusy(bool busy) {
    if (busy == m_isBusy) {
        return;
    }
    m_isBusy = busy;
    if (busy) {
        setMinimumWidth(sizeHint().width());
        m_icon = icon();
    }
    setIcon(busy ? QIcon() : m_icon);
    setText(busy ? QString() : m_label);
    m_spinner->setVisible(busy);
}

void BusyButton::resizeEvent(QResizeEvent* event) {
    QPushButton::resizeEvent(event);
    m_spinner->move((width() - m_spinner->width()) / 2, (height() - m_spinner->height()) / 2);
}

} // namespace ombrel
