#pragma once

#include "core/Agent.h"
#include "shell/design/Card.h"

#include <QList>

#include <set>

class QGridLayout;
class QToolButton;

namespace ombrel {

class ChoiceBox;
class ElidedLabel;
class IconView;
class MessageText;
class Spinner;
class TextArea;
class TextField;
class TextLabel;

// A sample input of an agent with what is expected of the answer, and how the last run went. Its
// controls have the object names NAME.input, NAME.run, NAME.remove, NAME.enumCase for what an
// enumeration is expected to be, and NAME.field.N for the fields of an object.
class EvaluationCaseCard final : public Card {
    Q_OBJECT

  public:
    explicit EvaluationCaseCard(const QString& name, QWidget* parent = nullptr);
    void showCase(const Agent& agent, const AgentEvaluationCase& evaluationCase, int number,
                  const std::set<Uuid>& runningCaseIDs);

  Q_SIGNALS:
    void runRequested();
    void removeRequested();
    void inputEdited(const QString& input);
    void enumCaseChosen(const QString& name);
    void fieldEdited(const QString& name, const QString& value);

  private:
    // What is expected of one property: a menu or a text box.
    struct Field {
        ElidedLabel* title;
        ChoiceBox* menu;
        TextField* text;
        QString name;
        QStringList values; // of the menu
    };
    void addField();
    void showEnumCase(const Agent& agent, const AgentEvaluationCase& evaluationCase);
    void showFields(const Agent& agent, const AgentEvaluationCase& evaluationCase);

    TextLabel* m_title;
    IconView* m_verdict;
    QToolButton* m_run;
    Spinner* m_spinner;
    TextArea* m_input;
    TextLabel* m_expectedTitle;
    ChoiceBox* m_enumCase;
    QStringList m_enumCases;
    QGridLayout* m_grid;
    QList<Field> m_fields;
    TextLabel* m_restOfFields;
    TextLabel* m_outputTitle;
    MessageText* m_output;
};

} // namespace ombrel
