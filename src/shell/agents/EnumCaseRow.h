#pragma once

#include "core/AgentEnumCase.h"

#include <QFrame>

namespace ombrel {

class TextField;

// A case of an enumeration in an EnumCaseListEditor. Its controls have the object names NAME.name,
// NAME.description and NAME.remove.
class EnumCaseRow final : public QFrame {
    Q_OBJECT

  public:
    explicit EnumCaseRow(const QString& name, QWidget* parent = nullptr);
    const AgentEnumCase& value() const { return m_case; }
    void showValue(const AgentEnumCase& enumCase);

  Q_SIGNALS:
    void changed();
    void removeRequested();

  private:
    AgentEnumCase m_case;
    TextField* m_name;
    TextField* m_description;
};

} // namespace ombrel
