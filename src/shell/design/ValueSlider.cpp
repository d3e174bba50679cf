#include "shell/design/ValueSlider.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QStyle>
#include <QStyleOptionSlider>

#include <algorithm>
#include <cmath>

namespace ombrel {

namespace {

// Finer than any screen.
constexpr int positions = 100'000;

} // namespace

ValueSlider::ValueSlider(double least, double most, double keyStep, QWidget* parent)
    : QSlider(Qt::Horizontal, parent), m_least(least), m_most(most), m_keyStep(keyStep),
      m_value(least) {
    setRange(0, positions);
    setFocusPolicy(Qt::TabFocus);
    connect(this, &QSlider::valueChanged, this, [this](int position) {
        m_value = m_least + (m_most - m_least) * position / positions;
        Q_EMIT moved(m_value);
    });
}

void ValueSlider::showValue(double value) {
    m_value = std::isnan(value) ? m_least : std::clamp(value, m_least, m_most);
    const QSignalBlocker silently(this);
    setValue(static_cast<int>(std::lround((m_value - m_least) / (m_most - m_least) * positions)));
}

void ValueSlider::setValueText(const QString& text) {
    setAccessibleDescription(text);
}

void ValueSlider::moveTo(double value) {
    const double inside = std::clamp(value, m_least, m_most);
    if (inside != m_value) {
        showValue(inside);
        Q_EMIT moved(inside);
    }
}

void ValueSlider::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        QStyleOptionSlider option;
        initStyleOption(&option);
        const QRect groove =
            style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderGroove, this);
        const QRect handle =
            style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
        if (!handle.contains(event->pos())) {
            const int x = event->pos().x() - groove.left() - handle.width() / 2;
            setValue(QStyle::sliderValueFromPosition(
                0, positions, x, groove.width() - handle.width(), option.upsideDown));
        }
    }
    QSlider::mousePressEvent(event);
}

void ValueSlider::keyPressEvent(QKeyEvent* event) {
    constexpr int stepsPerPage = 10;
    const auto go = [this](int steps) {
        // From between two multiples, the nearer end of the way counts as the first step.
        const double at = m_value / m_keyStep;
        const double from = steps > 0 ? std::floor(at) : std::ceil(at);
        moveTo((from + steps) * m_keyStep);
    };
    const bool isMirrored = layoutDirection() == Qt::RightToLeft;
    switch (event->key()) {
    case Qt::Key_Right:
        return go(isMirrored ? -1 : 1);
    case Qt::Key_Left:
        return go(isMirrored ? 1 : -1);
    case Qt::Key_Up:
        return go(1);
    case Qt::Key_Down:
        return go(-1);
    case Qt::Key_PageUp:
        return go(stepsPerPage);
    case Qt::Key_PageDown:
        return go(-stepsPerPage);
    case Qt::Key_Home:
        return moveTo(m_least);
    case Qt::Key_End:
        return moveTo(m_most);
    default:
        QSlider::keyPressEvent(event);
    }
}

void ValueSlider::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

} // namespace ombrel
