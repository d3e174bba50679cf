#pragma once

#include "core/AgentProperty.h"
#include "shell/StateView.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

class QVBoxLayout;

namespace ombrel {

// The fields of a flow's input, with what the user typed for them. The values are the workspace's:
// all flows share them by the name of the field. The control of field N is "debug.input.N".
class StartInputForm final : public StateView {
    Q_OBJECT

  public:
    StartInputForm(std::shared_ptr<AppState> state, Uuid flowID, QWidget* parent = nullptr);

  protected:
    void refresh() override;

  private:
    void makeFields(const std::vector<AgentProperty>& fields);
    QWidget* makeControl(const AgentProperty& field);
    void showValue(QWidget* control, const AgentProperty& field);
    void setValue(const std::string& name, const QString& value);

    Uuid m_flowID;
    std::vector<AgentProperty> m_fields;
    std::vector<QWidget*> m_controls;
    QVBoxLayout* m_column;
};

} // namespace ombrel
