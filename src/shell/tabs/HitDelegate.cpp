#include "shell/tabs/HitDelegate.h"

#include "core/DocumentChunk.h"
#include "retrieval/PlaygroundTexts.h"
#include "shell/QtText.h"
#include "shell/design/Badge.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"
#include "shell/tabs/HitListModel.h"

#include <QAbstractScrollArea>
#include <QPainter>

#include <algorithm>
#include <array>

namespace ombrel {

namespace {

constexpr int gap = spacing::small; // below a row
constexpr int inset = spacing::medium;
constexpr int rankWidth = 36;
constexpr int barWidth = 56;
constexpr int barHeight = 4;

QFontMetrics metricsOf(TextRole role) {
    return QFontMetrics(Theme::current().font(role));
}

QString shownSnippet(const RetrievedChunk& hit) {
    return toQt(hit.snippet).simplified();
}

int textWidth(int rowWidth) {
    return std::max(80, rowWidth - 2 * inset - rankWidth);
}

int snippetHeight(const RetrievedChunk& hit, int rowWidth) {
    return metricsOf(TextRole::body)
        .boundingRect(QRect(0, 0, textWidth(rowWidth), 10'000), Qt::TextWordWrap, shownSnippet(hit))
        .height();
}

void paintScores(QPainter& painter, const RetrievedChunk& hit, QRect line) {
    const ThemeColors& colors = Theme::current().colors();
    const QFontMetrics metrics = metricsOf(TextRole::caption);
    const std::vector<std::string> labels = scoreLabels(hit);
    const std::array<double, 3> scores{hit.keywordScore, hit.vectorScore, hit.fusedScore};
    painter.setFont(Theme::current().font(TextRole::caption));
    int x = line.left();
    for (std::size_t i = 0; i < scores.size(); ++i) {
        const QString label = toQt(labels[i]);
        const int width = metrics.horizontalAdvance(label);
        painter.setPen(colors.secondary);
        painter.drawText(QRect(x, line.top(), width + 2, line.height()), Qt::AlignVCenter, label);
        x += width + spacing::small;
        const QRectF track(x, line.center().y() - barHeight / 2.0 + 1, barWidth, barHeight);
        QRectF bar = track;
        bar.setWidth(barWidth * std::clamp(scores[i], 0.0, 1.0));
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors.border);
        painter.drawRoundedRect(track, barHeight / 2.0, barHeight / 2.0);
        painter.setBrush(i == 2 ? colors.accent : colors.faint);
        painter.drawRoundedRect(bar, barHeight / 2.0, barHeight / 2.0);
        x += barWidth + spacing::large;
    }
}

} // namespace

HitDelegate::HitDelegate(const HitListModel& model, QObject* owner)
    : QAbstractItemDelegate(owner), m_model(model) {}

QSize HitDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const RetrievedChunk& hit = m_model.row(index.row());
    const auto* view = qobject_cast<const QAbstractScrollArea*>(option.widget);
    const int width = view ? view->viewport()->width() : option.rect.width();
    const int head = Badge::sizeOf(toQt(promptLabel(hit))).height();
    const int caption = metricsOf(TextRole::caption).height();
    int height =
        2 * inset + head + spacing::tight + snippetHeight(hit, width) + spacing::small + caption;
    if (hit.usedParent) {
        height += caption + spacing::tight;
    }
    return {width, height + gap};
}

void HitDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const {
    const RetrievedChunk& hit = m_model.row(index.row());
    const Theme& theme = Theme::current();
    const ThemeColors& colors = theme.colors();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect row = option.rect.adjusted(0, 0, 0, -gap);
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const bool hasKeyboard = option.state.testFlag(QStyle::State_HasFocus);
    painter->setPen(QPen(hasKeyboard ? colors.focus : colors.border, hasKeyboard ? 2 : 1));
    painter->setBrush(isSelected ? colors.accentSoft : colors.raised);
    const double half = hasKeyboard ? 1 : 0.5;
    painter->drawRoundedRect(QRectF(row).adjusted(half, half, -half, -half), spacing::small,
                             spacing::small);

    const QString label = toQt(promptLabel(hit));
    const QSize badge = Badge::sizeOf(label);
    const int left = row.left() + inset;
    const int right = row.right() - inset;
    int y = row.top() + inset;
    painter->setFont(theme.font(TextRole::strong));
    painter->setPen(hit.inPrompt ? colors.accentText : colors.secondary);
    painter->drawText(QRect(left, y, rankWidth, badge.height()), Qt::AlignVCenter,
                      QString::number(hit.rank));
    const int textLeft = left + rankWidth;
    Badge::paint(*painter, QRect(QPoint(right - badge.width(), y), badge), label,
                 hit.inPrompt ? Tone::success : Tone::warning);
    painter->setFont(theme.font(TextRole::strong));
    painter->setPen(colors.text);
    const int room = right - badge.width() - spacing::medium - textLeft;
    painter->drawText(QRect(textLeft, y, room, badge.height()),
                      Qt::AlignVCenter | Qt::TextSingleLine,
                      painter->fontMetrics().elidedText(toQt(breadcrumbText(hit.breadcrumb)),
                                                        Qt::ElideMiddle, room));
    y += badge.height() + spacing::tight;
    painter->setFont(theme.font(TextRole::body));
    const int snippet = snippetHeight(hit, option.rect.width());
    painter->setPen(colors.secondary);
    painter->drawText(QRect(textLeft, y, right - textLeft, snippet), Qt::TextWordWrap,
                      shownSnippet(hit));
    y += snippet + spacing::small;
    const int caption = metricsOf(TextRole::caption).height();
    paintScores(*painter, hit, QRect(textLeft, y, right - textLeft, caption));
    if (hit.usedParent) {
        y += caption + spacing::tight;
        painter->setFont(theme.font(TextRole::caption));
        painter->setPen(colors.accentText);
        painter->drawText(QRect(textLeft, y, right - textLeft, caption), Qt::AlignVCenter,
                          painter->fontMetrics().elidedText(toQt(usedParentNote), Qt::ElideRight,
                                                            right - textLeft));
    }
    painter->restore();
}

} // namespace ombrel
