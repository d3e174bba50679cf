#include "shell/design/Spinner.h"

#include "shell/design/Theme.h"

#include <QPainter>

namespace ombrel {

namespace {

constexpr int stepsOfTurn = 12;

} // namespace

Spinner::Spinner(int side, QWidget* parentWidget) : QWidget(parentWidget) {
    setFixedSize(side, side);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAccessibleName(tr("Busy"));
    m_timer.setInterval(80);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_step = (m_step + 1) % stepsOfTurn;
        update();
    });
}

void Spinner::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    m_timer.start();
}

void Spinner::hideEvent(QHideEvent* event) {
    m_timer.stop();
    QWidget::hideEvent(event);
}

void Spinner::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const ThemeColors& colors = Theme::current().colors();
    const double stroke = 2;
    const QRectF circle = QRectF(rect()).adjusted(stroke, stroke, -stroke, -stroke);
    painter.setPen(QPen(colors.border, stroke));
    painter.drawEllipse(circle);
    painter.setPen(QPen(colors.accentText, stroke, Qt::SolidLine, Qt::RoundCap));
    constexpr int degree = 16;
    painter.drawArc(circle, -m_step * 360 / stepsOfTurn * degree, 100 * degree);
}

} // namespace ombrel
