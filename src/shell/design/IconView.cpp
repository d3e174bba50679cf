#include "shell/design/IconView.h"

#include "shell/design/Icon.h"

#include <QPainter>

namespace ombrel {

IconView::IconView(const QString& name, Tone tone, int side, QWidget* parent)
    : QWidget(parent), m_icon(themeIcon(name, tone)) {
    setFixedSize(side, side);
}

void IconView::setIcon(const QString& name, Tone tone) {
    m_icon = themeIcon(name, tone);
    update();
}

void IconView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    m_icon.paint(&painter, rect());
}

} // namespace ombrel
