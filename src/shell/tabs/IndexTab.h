#pragma once

#include "shell/TabPage.h"

namespace ombrel {

class FactList;

// What the build produced.
class IndexTab final : public TabPage {
    Q_OBJECT

  public:
    IndexTab(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent);

  protected:
    void refresh() override;

  private:
    FactList* m_facts;
};

} // namespace ombrel
