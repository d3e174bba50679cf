#pragma once

#include "knowledge/RecipeTexts.h"

#include <QFrame>

namespace ombrel {

class TextLabel;

// One step of the recipe. Its labels have its object name and ".title", ".tag" or ".example".
class RecipeStepView final : public QFrame {
    Q_OBJECT

  public:
    explicit RecipeStepView(const QString& name, QWidget* parent = nullptr);
    void showStep(const RecipeStep& step);

  private:
    TextLabel* m_title;
    TextLabel* m_tag;
    TextLabel* m_example;
};

} // namespace ombrel
