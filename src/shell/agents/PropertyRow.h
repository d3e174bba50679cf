#pragma once

#include "core/AgentProperty.h"

#include <QFrame>

class QCheckBox;
class QLabel;
class QToolButton;
class QVBoxLayout;

namespace ombrel {

class ChoiceBox;
class EnumCaseListEditor;
class PropertyListEditor;
class TextField;

// A field in a PropertyListEditor. Its controls have the object names NAME.name, NAME.type,
// NAME.element, NAME.optional, NAME.description and NAME.remove; the lists in it are
// NAME.properties and NAME.cases, and NAME.fold shows or hides them.
class PropertyRow final : public QFrame {
    Q_OBJECT

  public:
    PropertyRow(const QString& name, bool allowsNesting, QWidget* parent = nullptr);
    const AgentProperty& value() const { return m_property; }
    void showValue(const AgentProperty& property);

  Q_SIGNALS:
    void changed();
    void removeRequested();

  private:
    void setKind(PropertyKind kind);
    void showKind();
    void showNested();
    void takeNested();

    bool m_allowsNesting;
    AgentProperty m_property;
    bool m_isUnfolded = true;
    TextField* m_name;
    ChoiceBox* m_type;
    QLabel* m_of;
    ChoiceBox* m_element;
    QCheckBox* m_optional;
    TextField* m_description;
    QToolButton* m_fold;
    QFrame* m_nested;
    QVBoxLayout* m_nestedColumn;
    // Made when first needed.
    PropertyListEditor* m_properties = nullptr;
    EnumCaseListEditor* m_cases = nullptr;
};

} // namespace ombrel
