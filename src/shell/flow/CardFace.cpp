#include "shell/flow/CardFace.h"

#include "shell/design/Icon.h"
#include "shell/design/MixedColor.h"
#include "shell/design/Theme.h"
#include "shell/flow/CanvasMetrics.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>

namespace ombrel {

namespace {

// By the order of a node's kinds: start, agent, branch, tool, end.
enum Kind : std::size_t { start, agent, branch, tool, end };

constexpr std::array<const char*, 5> icons{"play", "agent", "branch", "tool", "end"};

// The colour with its hue turned, as strong and as light as it is.
QColor turned(const QColor& color, float degrees) {
    float hue = 0;
    float saturation = 0;
    float lightness = 0;
    color.getHslF(&hue, &saturation, &lightness);
    hue = std::fmod(hue + degrees / 360 + 1, 1.0F);
    return QColor::fromHslF(hue, saturation * 0.85F, lightness);
}

void drawShadow(QPainter& painter, const QRectF& card, bool isRaised) {
    painter.setPen(Qt::NoPen);
    const bool isDark = Theme::current().isDark();
    const int layers = isRaised ? 7 : 4;
    painter.setBrush(QColor(0, 0, 0, isDark ? 18 : 6));
    for (int layer = 1; layer <= layers; ++layer) {
        painter.drawRoundedRect(card.adjusted(-layer * 0.9, -layer * 0.3, layer * 0.9, layer * 1.5),
                                canvas::cardCorner + layer, canvas::cardCorner + layer);
    }
}

void drawHandle(QPainter& painter, QPointF at, double radius, const QColor& fill,
                const QColor& line) {
    painter.setPen(QPen(line, 1.6));
    painter.setBrush(fill);
    painter.drawEllipse(at, radius, radius);
}

} // namespace

QPixmap scaledIcon(const QIcon& icon, double side) {
    constexpr int usual = 80; // is kept, and scaled quickly
    const int pixels = std::max(1, static_cast<int>(std::lround(side)));
    const QPixmap whole = icon.pixmap(QSize(usual, usual).expandedTo({pixels, pixels}), 1.0);
    return pixels == whole.width()
               ? whole
               : whole.scaled(pixels, pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QColor CardFace::ink(std::size_t kind) {
    const ThemeColors& colors = Theme::current().colors();
    switch (kind) {
    case start:
        return colors.success;
    case branch:
        return colors.warning;
    case tool:
        return turned(colors.accentText, -42);
    case end:
        return turned(colors.accentText, 52);
    default:
        return colors.accentText;
    }
}

QColor CardFace::soft(std::size_t kind) {
    const ThemeColors& colors = Theme::current().colors();
    switch (kind) {
    case start:
        return colors.successSoft;
    case branch:
        return colors.warningSoft;
    case tool:
        return turned(colors.accentSoft, -42);
    case end:
        return turned(colors.accentSoft, 52);
    default:
        return colors.accentSoft;
    }
}

void CardFace::draw(QPainter& painter, bool withBars) const {
    using State = FlowRunHighlight::NodeState;
    const ThemeColors& colors = Theme::current().colors();
    const QRectF card = canvas::cardRect({});
    const bool isBright = isSelected || isTarget;
    painter.setRenderHint(QPainter::Antialiasing);

    QColor border = isHovered ? colors.strongBorder : colors.border;
    double width = 1.2;
    if (runState == State::visited) {
        border = colors.success;
        width = 1.8;
    } else if (runState == State::active) {
        border = colors.accent;
        width = 2.2;
    } else if (runState == State::failed) {
        border = colors.danger;
        width = 2.2;
    }
    drawShadow(painter, card, isHovered || isBright);
    if (isBright) {
        QColor ring = isTarget ? colors.accent : colors.focus;
        ring.setAlphaF(hasFocus || isTarget ? 0.42F : 0.28F);
        painter.setPen(QPen(ring, 4));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(card.adjusted(-2.6, -2.6, 2.6, 2.6), canvas::cardCorner + 2.6,
                                canvas::cardCorner + 2.6);
        if (runState == State::notReached) {
            border = colors.accent;
            width = 1.8;
        }
    }
    painter.setPen(QPen(border, width));
    painter.setBrush(isFaint ? mixed(colors.surface, colors.window, 0.6) : colors.surface);
    painter.drawRoundedRect(card, canvas::cardCorner, canvas::cardCorner);

    constexpr double side = 34;
    const QRectF tile(card.left() + 12, -side / 2, side, side);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isFaint ? mixed(soft(kind), colors.window, 0.55) : soft(kind));
    painter.drawRoundedRect(tile, 10, 10);
    constexpr double iconSide = 20;
    // Its shape; the colour is put in below.
    QPixmap icon =
        scaledIcon(themeIcon(QLatin1String(icons[kind])), iconSide * painter.transform().m11());
    {
        QPainter tint(&icon);
        tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
        tint.fillRect(icon.rect(), isFaint ? mixed(ink(kind), colors.window, 0.45) : ink(kind));
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(
        QRectF(tile.center() - QPointF(iconSide / 2, iconSide / 2), QSizeF(iconSide, iconSide)),
        icon, icon.rect());

    if (withBars) {
        const double left = tile.right() + 9;
        const double most = card.right() - 16 - left;
        painter.setPen(Qt::NoPen);
        QColor bar = colors.text;
        bar.setAlphaF(isFaint ? 0.28F : 0.55F);
        painter.setBrush(bar);
        painter.drawRoundedRect(QRectF(left, -13, std::min(most, 16.0 * titleBar + 20), 9), 4, 4);
        bar.setAlphaF(isFaint ? 0.14F : 0.26F);
        painter.setBrush(bar);
        if (subtitleBar > 0) {
            painter.drawRoundedRect(QRectF(left, 5, std::min(most, 14.0 * subtitleBar + 12), 7),
                                    3.5, 3.5);
        }
    }

    if (kind != start) {
        drawHandle(painter, canvas::inputHandle({}), 4, isTarget ? colors.accent : colors.surface,
                   isTarget ? colors.accent : colors.strongBorder);
    }
    if (kind != end) {
        drawHandle(painter, canvas::outputHandle({}), canvas::handleRadius,
                   isHovered ? colors.accent : colors.surface,
                   isHovered || isSelected ? colors.accent : colors.strongBorder);
    }
}

void CardFaces::setScale(double unit, bool withBars) {
    if (unit == m_unit && withBars == m_withBars) {
        return;
    }
    m_pictures.clear();
    m_unit = unit;
    m_withBars = withBars;
    const double margin = 14 * unit;
    const int halfWidth = static_cast<int>(std::ceil(canvas::cardWidth / 2 * unit + margin));
    const int halfHeight = static_cast<int>(std::ceil(canvas::cardHeight / 2 * unit + margin));
    m_size = {2 * halfWidth, 2 * halfHeight};
    m_centre = {halfWidth, halfHeight};
}

const QPixmap& CardFaces::picture(const CardFace& face) {
    QPixmap& picture = m_pictures[face];
    if (picture.isNull()) {
        picture = QPixmap(m_size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        painter.translate(m_centre);
        painter.scale(m_unit, m_unit);
        face.draw(painter, m_withBars);
    }
    return picture;
}

} // namespace ombrel
