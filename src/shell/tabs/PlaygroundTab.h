#pragma once

#include "shell/TabPage.h"

namespace ombrel {

class FactList;

// The question and its answer.
class PlaygroundTab final : public TabPage {
    Q_OBJECT

  public:
    PlaygroundTab(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent);

  protected:
    void refresh() override;

  private:
    FactList* m_facts;
};

} // namespace ombrel
