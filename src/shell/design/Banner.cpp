#include "shell/design/Banner.h"

#include "shell/design/IconView.h"
#include "shell/design/Spacing.h"
#include "shell/design/Theme.h"

#include <QHBoxLayout>
#include <QPainter>

namespace ombrel {

namespace {

QString iconOf(Tone tone) {
    switch (tone) {
    case Tone::success:
        return QStringLiteral("check-circle");
    case Tone::warning:
    case Tone::danger:
        return QStringLiteral("alert");
    case Tone::neutral:
    case Tone::accent:
        break;
    }
    return QStringLiteral("info");
}

} // namespace

Banner::Banner(Tone tone, const QString& text, QWidget* parent)
    : QFrame(parent), m_tone(tone), m_row(new QHBoxLayout(this)),
      m_icon(new IconView(iconOf(tone), tone, 18)), m_text((new TextLabel(text))->wrapping()) {
    m_row->setContentsMargins(spacing::medium, spacing::small + 2, spacing::medium,
                              spacing::small + 2);
    m_row->setSpacing(spacing::small + 2);
    m_row->addWidget(m_icon, 0, Qt::AlignVCenter);
    m_row->addWidget(m_text, 1);
    m_text->setObjectName(QStringLiteral("bannerText"));
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Minimum);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setText(text);
    connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

void Banner::setText(const QString& text) {
    m_text->setText(text);
    setAccessibleName(text);
}

void Banner::setTone(Tone tone) {
    if (m_tone != tone) {
        m_tone = tone;
        m_icon->setIcon(iconOf(tone), tone);
        update();
    }
}

void Banner::showOrHide(const QString& text) {
    setText(text);
    setVisible(!text.isEmpty());
}

void Banner::addAction(QWidget* control) {
    m_row->addWidget(control, 0, Qt::AlignVCenter);
}

void Banner::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::current().colors().soft(m_tone));
    painter.drawRoundedRect(rect(), spacing::small, spacing::small);
}

} // namespace ombrel
