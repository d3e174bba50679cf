#pragma once

#include "shell/TabPage.h"

namespace ombrel {

class FactList;

// The Swift package of the index.
class ExportTab final : public TabPage {
    Q_OBJECT

  public:
    ExportTab(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent);

  protected:
    void refresh() override;

  private:
    FactList* m_facts;
};

} // namespace ombrel
