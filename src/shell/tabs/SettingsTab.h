#pragma once

#include "shell/TabPage.h"

namespace ombrel {

class FactList;

// The recipe of the selected variant.
class SettingsTab final : public TabPage {
    Q_OBJECT

  public:
    SettingsTab(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent);

  protected:
    void refresh() override;

  private:
    FactList* m_facts;
};

} // namespace ombrel
