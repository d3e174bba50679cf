#include "shell/flow/TraceDelegate.h"

#include "shell/QtText.h"
#include "shell/design/Badge.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"
#include "shell/flow/TraceModel.h"

#include <QPainter>

#include <algorithm>

namespace ombrel {

namespace {

constexpr int mostKindWidth = 170;
constexpr int mostNodeWidth = 180;

int widthOf(TextRole role, const QString& text) {
    return QFontMetrics(Theme::current().font(role)).horizontalAdvance(text);
}

} // namespace

TraceDelegate::TraceDelegate(const TraceModel& model, QObject* owner)
    : QAbstractItemDelegate(owner), m_model(model) {}

void TraceDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const {
    const Theme& theme = Theme::current();
    const ThemeColors& colors = theme.colors();
    const FlowTraceEvent& event = m_model.event(index.row());
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    if (isSelected || option.state.testFlag(QStyle::State_MouseOver)) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(isSelected ? colors.accentSoft : colors.hover);
        painter->drawRoundedRect(option.rect.adjusted(spacing::tight, 1, -spacing::tight, -1),
                                 spacing::corner, spacing::corner);
    }
    const QRect row = option.rect.adjusted(spacing::medium, 0, -spacing::medium, 0);
    int x = row.left();
    const auto write = [&](TextRole role, const QColor& ink, const QString& text, int room,
                           Qt::Alignment side) {
        room = std::clamp(row.right() - x, 0, room);
        painter->setFont(theme.font(role));
        painter->setPen(ink);
        painter->drawText(QRect(x, row.top(), room, row.height()),
                          static_cast<int>(side | Qt::AlignVCenter) | Qt::TextSingleLine,
                          painter->fontMetrics().elidedText(text, Qt::ElideRight, room));
        x += room + spacing::medium;
    };
    write(TextRole::code, colors.secondary, TraceModel::timeText(event),
          widthOf(TextRole::code, m_model.longestTime()) + 2, Qt::AlignRight);
    const int kindRoom =
        std::min(mostKindWidth, Badge::sizeOf(m_model.longestKind()).width() + spacing::small);
    const QString kind =
        QFontMetrics(theme.font(TextRole::caption))
            .elidedText(toQt(event.kind), Qt::ElideRight, kindRoom - 2 * spacing::small);
    const QSize badge = Badge::sizeOf(kind);
    Badge::paint(*painter, QRect(QPoint(x, row.top() + (row.height() - badge.height()) / 2), badge),
                 kind, event.node ? Tone::accent : Tone::neutral);
    x += kindRoom + spacing::small;
    if (!m_model.longestNode().isEmpty()) {
        write(TextRole::strong, colors.text, event.node ? toQt(*event.node) : QString(),
              std::min(mostNodeWidth, widthOf(TextRole::strong, m_model.longestNode()) + 4),
              Qt::AlignLeft);
    }
    write(TextRole::body, colors.secondary, TraceModel::detailLine(event), row.width(),
          Qt::AlignLeft);
    painter->restore();
}

QSize TraceDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
    return {option.rect.width(), Badge::sizeOf(QStringLiteral("M")).height() + spacing::small};
}

} // namespace ombrel
