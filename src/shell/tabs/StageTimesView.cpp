#include "shell/tabs/StageTimesView.h"

#include "shell/QtText.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QPainter>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

constexpr int nameWidth = 72;
constexpr int labelWidth = 76;
constexpr int barHeight = 8;

int lineHeight() {
    return QFontMetrics(Theme::current().font(TextRole::body)).height() + spacing::small + spacing::hair;
}

} // namespace

StageTimesView::StageTimesView(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("playground.stages"));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

void StageTimesView::show(std::vector<TimingStage> stages) {
    m_stages = std::move(stages);
    QStringList said;
    for (const TimingStage& stage : m_stages) {
        said.append(toQt(stage.name) + QLatin1Char(' ') + toQt(stage.label));
    }
    setAccessibleName(said.join(QStringLiteral(", ")));
    updateGeometry();
    update();
}

QSize StageTimesView::sizeHint() const {
    return {nameWidth + labelWidth + 80, static_cast<int>(m_stages.size()) * lineHeight()};
}

void StageTimesView::paintEvent(QPaintEvent*) {
    std::int64_t longest = 1;
    for (const TimingStage& stage : m_stages) {
        longest = std::max(longest, stage.milliseconds);
    }
    const Theme& theme = Theme::current();
    const ThemeColors& colors = theme.colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(theme.font(TextRole::body));
    const int height = lineHeight();
    const double room = width() - nameWidth - labelWidth;
    int y = 0;
    for (const TimingStage& stage : m_stages) {
        const QRect line(0, y, width(), height);
        painter.setPen(colors.secondary);
        painter.drawText(line, Qt::AlignVCenter | Qt::AlignLeft, toQt(stage.name));
        painter.setPen(colors.text);
        painter.drawText(line, Qt::AlignVCenter | Qt::AlignRight, toQt(stage.label));
        const double share = static_cast<double>(std::max<std::int64_t>(stage.milliseconds, 0)) /
                             static_cast<double>(longest);
        const QRectF track(nameWidth, line.center().y() - barHeight / 2.0 + 1, room, barHeight);
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors.raised);
        painter.drawRoundedRect(track, barHeight / 2.0, barHeight / 2.0);
        if (stage.milliseconds > 0) {
            QRectF bar = track;
            bar.setWidth(std::max<double>(barHeight, room * share));
            painter.setBrush(colors.accent);
            painter.drawRoundedRect(bar, barHeight / 2.0, barHeight / 2.0);
        }
        y += height;
    }
}

} // namespace ombrel
