#include "shell/flow/ConsoleDelegate.h"

#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"
#include "shell/flow/ConsoleModel.h"

#include <QPainter>

namespace ombrel {

namespace {

using Kind = FlowConsoleLine::Kind;

constexpr int gutter = 20; // for the mark of the kind

QString markOf(Kind kind) {
    switch (kind) {
    case Kind::step:
        return QStringLiteral("\u25b8");
    case Kind::success:
        return QStringLiteral("\u2713");
    case Kind::failure:
        return QStringLiteral("\u2717");
    case Kind::info:
    case Kind::output:
        break;
    }
    return {};
}

QColor colorOf(Kind kind) {
    const ThemeColors& colors = Theme::current().colors();
    switch (kind) {
    case Kind::info:
        return colors.secondary;
    case Kind::step:
        return colors.accentText;
    case Kind::success:
        return colors.success;
    case Kind::failure:
        return colors.danger;
    case Kind::output:
        break;
    }
    return colors.text;
}

} // namespace

ConsoleDelegate::ConsoleDelegate(const ConsoleModel& model, QObject* owner)
    : QAbstractItemDelegate(owner), m_model(model) {}

void ConsoleDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const {
    const Theme& theme = Theme::current();
    const Kind kind = m_model.line(index.row()).kind;
    painter->save();
    if (option.state.testFlag(QStyle::State_Selected)) {
        painter->fillRect(option.rect, theme.colors().accentSoft);
    }
    painter->setFont(theme.font(TextRole::code));
    painter->setPen(colorOf(kind));
    QRect place = option.rect.adjusted(spacing::medium, 0, 0, 0);
    painter->drawText(place, Qt::AlignVCenter | Qt::TextSingleLine, markOf(kind));
    place.setLeft(place.left() + gutter);
    painter->drawText(place, Qt::AlignVCenter | Qt::TextSingleLine,
                      index.data(Qt::DisplayRole).toString());
    painter->restore();
}

QSize ConsoleDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    const QFontMetrics metrics(Theme::current().font(TextRole::code));
    return {spacing::medium + gutter + spacing::medium +
                m_model.columns() * metrics.horizontalAdvance(QLatin1Char('M')),
            metrics.height() + spacing::tight};
}

} // namespace ombrel
