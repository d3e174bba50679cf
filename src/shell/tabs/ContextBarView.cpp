#include "shell/tabs/ContextBarView.h"

#include "shell/QtText.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QPainter>
#include <QPainterPath>
#include <QStringList>

#include <algorithm>
#include <array>
#include <utility>

namespace ombrel {

namespace {

constexpr int barHeight = 16;
constexpr int dot = 8;

int lineHeight() {
    return QFontMetrics(Theme::current().font(TextRole::body)).height() + spacing::tight;
}

QColor colorOf(std::size_t segment) {
    const ThemeColors& colors = Theme::current().colors();
    const std::array<QColor, 4> all{colors.faint, colors.accent, colors.success,
                                    colors.strongBorder};
    return all[segment % all.size()];
}

} // namespace

ContextBarView::ContextBarView(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("playground.contextBar"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

void ContextBarView::show(std::vector<ContextSegment> segments, std::int64_t budget) {
    m_segments = std::move(segments);
    m_budget = budget;
    QStringList said;
    for (const ContextSegment& segment : m_segments) {
        said.append(tr("%1: %2 tokens").arg(toQt(segment.label), numberText(segment.tokens)));
    }
    setAccessibleName(said.join(QStringLiteral(", ")));
    updateGeometry();
    update();
}

QSize ContextBarView::sizeHint() const {
    return {240, barHeight + spacing::small + static_cast<int>(m_segments.size()) * lineHeight()};
}

void ContextBarView::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::current();
    const ThemeColors& colors = theme.colors();
    double whole = 0;
    for (const ContextSegment& segment : m_segments) {
        whole += static_cast<double>(segment.tokens);
    }
    whole = std::max({whole, static_cast<double>(m_budget), 1.0});

    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    QPainterPath bar;
    bar.addRoundedRect(QRectF(0, 0, width(), barHeight), spacing::tight, spacing::tight);
    painter.fillPath(bar, colors.raised);
    painter.save();
    painter.setClipPath(bar);
    double x = 0;
    for (std::size_t i = 0; i < m_segments.size(); ++i) {
        const double share = width() * static_cast<double>(m_segments[i].tokens) / whole;
        painter.fillRect(QRectF(x, 0, std::max(share - 1, 0.0), barHeight), colorOf(i));
        x += share;
    }
    painter.restore();

    painter.setFont(theme.font(TextRole::body));
    int y = barHeight + spacing::small;
    for (std::size_t i = 0; i < m_segments.size(); ++i) {
        const QRect line(0, y, width(), lineHeight());
        painter.setPen(Qt::NoPen);
        painter.setBrush(colorOf(i));
        painter.drawEllipse(QRectF(0, line.center().y() - dot / 2.0 + 1, dot, dot));
        painter.setPen(colors.secondary);
        painter.drawText(line.adjusted(dot + spacing::small, 0, 0, 0), Qt::AlignVCenter,
                         toQt(m_segments[i].label));
        painter.setPen(colors.text);
        painter.drawText(line, Qt::AlignVCenter | Qt::AlignRight, numberText(m_segments[i].tokens));
        y += line.height();
    }
}

} // namespace ombrel
