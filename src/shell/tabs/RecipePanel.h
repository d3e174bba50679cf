#pragma once

#include "knowledge/RecipeTexts.h"
#include "shell/StateView.h"

#include <vector>

namespace ombrel {

class Banner;
class FactList;
class RecipeStepView;

// What happens under the selected variant, from the documents to the answer, step by step, and how
// it has done so far.
class RecipePanel final : public StateView {
    Q_OBJECT

  public:
    explicit RecipePanel(std::shared_ptr<AppState> state, QWidget* parent = nullptr);

  protected:
    void refresh() override;

  private:
    QWidget* makeButtons();

    std::vector<RecipeStepView*> m_steps;
    FactList* m_figures;
    Banner* m_spotlightNote;
    Banner* m_embeddingsNote;
};

} // namespace ombrel
