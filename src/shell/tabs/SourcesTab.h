#pragma once

#include "shell/TabPage.h"

namespace ombrel {

class FactList;

// Everything that the index is built from.
class SourcesTab final : public TabPage {
    Q_OBJECT

  public:
    SourcesTab(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent);

  protected:
    void refresh() override;

  private:
    FactList* m_facts;
};

} // namespace ombrel
