#include "shell/tabs/QuestionDelegate.h"

#include "core/DocumentChunk.h"
#include "evaluation/EvaluationTexts.h"
#include "shell/QtText.h"
#include "shell/design/Badge.h"
#include "shell/design/Icon.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"
#include "shell/tabs/QuestionListModel.h"

#include <QPainter>

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

constexpr int iconSide = 18;
constexpr qsizetype mostCharacters = 400;

int lineHeight(TextRole role) {
    return QFontMetrics(Theme::current().font(role)).height();
}

std::pair<QString, Tone> markOf(QuestionStatus status) {
    switch (status) {
    case QuestionStatus::passing:
        return {QStringLiteral("check-circle"), Tone::success};
    case QuestionStatus::failing:
        return {QStringLiteral("x-circle"), Tone::danger};
    case QuestionStatus::notEvaluated:
        break;
    }
    return {QStringLiteral("question"), Tone::neutral};
}

} // namespace

QuestionDelegate::QuestionDelegate(const QuestionListModel& model, QObject* owner)
    : QAbstractItemDelegate(owner), m_model(model) {}

QSize QuestionDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return {200, lineHeight(TextRole::body) + lineHeight(TextRole::caption) + 2 * spacing::small +
                     spacing::tight};
}

void QuestionDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const {
    const TestQuestion& question = m_model.question(index.row());
    const Theme& theme = Theme::current();
    const ThemeColors& colors = theme.colors();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF row = QRectF(option.rect).adjusted(0.5, 1.5, -0.5, -1.5);
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    if (isSelected || option.state.testFlag(QStyle::State_MouseOver)) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(isSelected ? colors.accentSoft : colors.hover);
        painter->drawRoundedRect(row, spacing::corner, spacing::corner);
    }
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        painter->setPen(QPen(colors.focus, 2));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(row.adjusted(0.5, 0.5, -0.5, -0.5), spacing::corner,
                                 spacing::corner);
    }
    const int titleHeight = lineHeight(TextRole::body);
    const int detailHeight = lineHeight(TextRole::caption);
    int y =
        option.rect.top() + (option.rect.height() - titleHeight - detailHeight - spacing::hair) / 2;
    const int left = option.rect.left() + spacing::small;
    const auto [icon, tone] = markOf(question.status);
    themeIcon(icon, tone)
        .paint(painter,
               QRect(left, option.rect.center().y() - iconSide / 2 + 1, iconSide, iconSide));

    int right = option.rect.right() - spacing::small;
    const auto badge = [&](const QString& text, Tone badgeTone) {
        const QSize size = Badge::sizeOf(text);
        const QRect place(
            QPoint(right - size.width(), option.rect.center().y() - size.height() / 2), size);
        Badge::paint(*painter, place, text, badgeTone);
        right = place.left() - spacing::small;
    };
    badge(toQt(questionStatusText(question)), tone);
    if (question.isDrafted) {
        badge(toQt(draftBadge), Tone::accent);
    }
    const int textLeft = left + iconSide + spacing::small;
    const int room = std::max(right - textLeft, 40);
    const auto line = [&](TextRole role, const QColor& color, const QString& text, int height) {
        painter->setFont(theme.font(role));
        painter->setPen(color);
        painter->drawText(QRect(textLeft, y, room, height), Qt::AlignVCenter | Qt::TextSingleLine,
                          painter->fontMetrics().elidedText(text.left(mostCharacters).simplified(),
                                                            Qt::ElideRight, room));
        y += height + spacing::hair;
    };
    line(TextRole::body, colors.text, toQt(question.question), titleHeight);
    line(TextRole::caption, colors.secondary,
         tr("Expected %1").arg(toQt(breadcrumbText(question.expectedBreadcrumb))), detailHeight);
    painter->restore();
}

} // namespace ombrel
