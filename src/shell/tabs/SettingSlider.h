#pragma once

#include "core/SettingRange.h"
#include "shell/glossary/GlossaryTopic.h"

#include <QWidget>

#include <optional>

namespace ombrel {

class TextLabel;
class ValueSlider;

// A number of the recipe: what it is, its value in words, and the slider that sets it. The slider
// has the object name, the value has ".value" after it.
class SettingSlider final : public QWidget {
    Q_OBJECT

  public:
    struct Setting {
        QString name;
        QString title;
        SettingRange range;
        double keyStep; // what the arrow keys go by
        std::optional<GlossaryTopic> topic;
    };
    explicit SettingSlider(const Setting& setting, QWidget* parent = nullptr);
    void showValue(double value, const QString& text);

  Q_SIGNALS:
    // The user moved it.
    void moved(double value);

  private:
    TextLabel* m_text;
    ValueSlider* m_slider;
};

} // namespace ombrel
