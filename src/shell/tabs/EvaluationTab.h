#pragma once

#include "shell/TabPage.h"

namespace ombrel {

class FactList;

// How well the right sections are found.
class EvaluationTab final : public TabPage {
    Q_OBJECT

  public:
    EvaluationTab(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent);

  protected:
    void refresh() override;

  private:
    FactList* m_facts;
};

} // namespace ombrel
