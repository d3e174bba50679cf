#include "shell/design/Chip.h"

#include "shell/design/Button.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QHBoxLayout>
#include <QPainter>

namespace ombrel {

Chip::Chip(const QString& name, const QString& text, bool isRemovable, QWidget* parent)
    : QFrame(parent), m_label(new ElidedLabel(text, TextRole::caption)) {
    setObjectName(name);
    setAccessibleName(text);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setMaximumWidth(280);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(spacing::small + 2, spacing::tight, spacing::tight, spacing::tight);
    row->setSpacing(spacing::tight);
    row->addWidget(m_label);
    if (isRemovable) {
        auto* remove = makeIconButton(QStringLiteral("x"), tr("Remove %1").arg(text));
        remove->setObjectName(name + QStringLiteral(".remove"));
        remove->setIconSize({12, 12});
        remove->setFixedSize(20, 20);
        row->addWidget(remove);
        connect(remove, &QToolButton::clicked, this, &Chip::removed);
    } else {
        row->setContentsMargins(spacing::small + 2, spacing::tight, spacing::small + 2,
                                spacing::tight);
    }
    connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

QString Chip::text() const {
    return m_label->text();
}

void Chip::paintEvent(QPaintEvent*) {
    const ThemeColors& colors = Theme::current().colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colors.border, 1));
    painter.setBrush(colors.raised);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), height() / 2.0,
                            height() / 2.0);
}

} // namespace ombrel
