#include "shell/flow/ConnectionList.h"

#include "shell/design/Badge.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/IconView.h"
#include "shell/design/LongText.h"
#include "shell/design/Spacing.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace ombrel {

ConnectionList::ConnectionList(QWidget* parent) : QWidget(parent) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::small);
}

void ConnectionList::showRows(const Rows& rows) {
    if (rows == m_shown) {
        return;
    }
    m_shown = rows;
    while (QLayoutItem* item = layout()->takeAt(0)) {
        item->widget()->deleteLater();
        item->widget()->hide();
        for (QWidget* child : item->widget()->findChildren<QWidget*>()) {
            child->setObjectName({}); // a test, and a screen reader, look for the new ones
        }
        delete item;
    }
    for (std::size_t i = 0; i < m_shown.size(); ++i) {
        const auto& [port, target] = m_shown[i];
        auto* row = new QWidget;
        auto* line = new QHBoxLayout(row);
        line->setContentsMargins(0, 0, 0, 0);
        line->setSpacing(spacing::small);
        if (!port.isEmpty()) {
            constexpr qsizetype most = 28;
            auto* badge = new Badge(port.size() > most ? port.left(most - 1) + QChar(0x2026) : port,
                                    Tone::accent);
            badge->setToolTip(toolTipText(port));
            badge->setObjectName(QStringLiteral("connection.%1.port").arg(i));
            line->addWidget(badge);
        }
        line->addWidget(new IconView(QStringLiteral("arrow-right"), Tone::neutral, spacing::icon));
        auto* label = new ElidedLabel(target);
        label->setObjectName(QStringLiteral("connection.%1.target").arg(i));
        line->addWidget(label, 1);
        layout()->addWidget(row);
    }
}

} // namespace ombrel
