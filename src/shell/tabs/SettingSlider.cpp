#include "shell/tabs/SettingSlider.h"

#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/design/ValueSlider.h"
#include "shell/glossary/HelpButton.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace ombrel {

SettingSlider::SettingSlider(const Setting& setting, QWidget* parent)
    : QWidget(parent), m_text(new TextLabel({}, TextRole::strong)),
      m_slider(named(new ValueSlider(setting.range.least, setting.range.most, setting.keyStep),
                     setting.name, setting.title)) {
    m_text->setObjectName(setting.name + QStringLiteral(".value"));
    auto* head = new QHBoxLayout;
    head->setSpacing(spacing::tight);
    auto* title = new TextLabel(setting.title);
    title->setBuddy(m_slider);
    head->addWidget(title);
    if (setting.topic) {
        head->addWidget(new HelpButton(*setting.topic));
    }
    head->addStretch(1);
    head->addWidget(m_text);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::tight);
    column->addLayout(head);
    column->addWidget(m_slider);
    connect(m_slider, &ValueSlider::moved, this, &SettingSlider::moved);
}

void SettingSlider::showValue(double value, const QString& text) {
    m_slider->showValue(value);
    m_slider->setValueText(text);
    m_text->setText(text);
}

} // namespace ombrel
