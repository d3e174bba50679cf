#include "shell/design/NumberBox.h"

#include <QWheelEvent>

#include <algorithm>
#include <limits>

namespace ombrel {

NumberBox::NumberBox(int least, int most, QWidget* parentWidget)
    : QSpinBox(parentWidget), m_least(least), m_most(most) {
    setRange(least, most);
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QSpinBox::valueChanged, this,
            [this](int value) { Q_EMIT edited(std::clamp(value, m_least, m_most)); });
}

void NumberBox::showValue(std::int64_t value) {
    const auto shown = static_cast<int>(std::clamp<std::int64_t>(
        value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
    const QSignalBlocker silent(this);
    setRange(std::min(m_least, shown), std::max(m_most, shown));
    setValue(shown);
}

void NumberBox::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

} // namespace ombrel
