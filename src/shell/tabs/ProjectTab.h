#pragma once

#include "shell/TabPage.h"

namespace ombrel {

class FactList;
class TextField;

// The project's name and figures, and the way to empty it.
class ProjectTab final : public TabPage {
    Q_OBJECT

  public:
    ProjectTab(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent);

  protected:
    void refresh() override;

  private:
    QWidget* makeIdentity();
    QWidget* makeDangerZone();

    TextField* m_name;
    FactList* m_facts;
};

} // namespace ombrel
