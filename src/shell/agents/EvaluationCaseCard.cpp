#include "shell/agents/EvaluationCaseCard.h"

#include "agents/AgentEvaluation.h"
#include "agents/AgentTexts.h"
#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/ChoiceBox.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/IconView.h"
#include "shell/design/MessageText.h"
#include "shell/design/Named.h"
#include "shell/design/RestText.h"
#include "shell/design/Spacing.h"
#include "shell/design/Spinner.h"
#include "shell/design/TextArea.h"
#include "shell/design/TextField.h"
#include "shell/design/TextLabel.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QRegularExpression>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

constexpr int inputHeight = 64;
// More fields of an object than these are counted only.
constexpr std::size_t mostFields = 100;

QStringList valuesOf(const std::vector<std::string>& choices) {
    QStringList values;
    for (const std::string& choice : choices) {
        values.append(toQt(choice));
    }
    return values;
}

// Shows the values in the menu, where the empty one is no expectation.
void showValues(ChoiceBox& menu, const QStringList& values, const QString& value) {
    QStringList entries = values;
    entries.replaceInStrings(QRegularExpression(QStringLiteral("^$")), toQt(noExpectationText));
    menu.showEntries(entries);
    menu.showChoice(static_cast<int>(values.indexOf(value)),
                    value.isEmpty() ? toQt(noExpectationText) : value);
}

} // namespace

EvaluationCaseCard::EvaluationCaseCard(const QString& name, QWidget* parentWidget)
    : Card(parentWidget), m_title(new TextLabel({}, TextRole::strong)),
      m_verdict(new IconView(QStringLiteral("check-circle"), Tone::success, 18)),
      m_run(makeIconButton(QStringLiteral("play"), tr("Run this case"))),
      m_spinner(new Spinner(spacing::icon)),
      m_input(named(new TextArea(tr("Sample input")), name + QStringLiteral(".input"),
                    tr("Sample input"))),
      m_expectedTitle(new TextLabel(toQt(expectedOutputHeading), TextRole::overline,
                                    TextLabel::Ink::secondary)),
      m_enumCase(named(new ChoiceBox, name + QStringLiteral(".enumCase"), tr("Expected case"))),
      m_grid(new QGridLayout),
      m_restOfFields(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_outputTitle(
          new TextLabel(tr("LAST OUTPUT"), TextRole::overline, TextLabel::Ink::secondary)),
      m_output(new MessageText) {
    setObjectName(name);
    m_verdict->setObjectName(name + QStringLiteral(".verdict"));
    m_run->setObjectName(name + QStringLiteral(".run"));
    m_spinner->setObjectName(name + QStringLiteral(".spinner"));
    m_expectedTitle->setObjectName(name + QStringLiteral(".expected"));
    m_output->setObjectName(name + QStringLiteral(".output"));
    auto* remove = makeIconButton(QStringLiteral("trash"), tr("Remove this case"));
    remove->setObjectName(name + QStringLiteral(".remove"));
    m_input->setFixedHeight(inputHeight);
    setFocusProxy(m_input);
    auto* head = new QHBoxLayout;
    head->setSpacing(spacing::small);
    head->addWidget(m_title);
    head->addWidget(m_verdict);
    head->addStretch(1);
    head->addWidget(m_spinner);
    head->addWidget(m_run);
    head->addWidget(remove);
    m_grid->setHorizontalSpacing(spacing::medium);
    m_grid->setVerticalSpacing(spacing::small);
    m_grid->setColumnStretch(0, 1);
    m_grid->setColumnStretch(1, 3);
    content()->setSpacing(spacing::small);
    content()->addLayout(head);
    content()->addWidget(m_input);
    content()->addWidget(m_expectedTitle);
    content()->addWidget(m_enumCase, 0, Qt::AlignLeft);
    content()->addLayout(m_grid);
    content()->addWidget(m_restOfFields);
    content()->addWidget(m_outputTitle);
    content()->addWidget(m_output);

    connect(m_run, &QToolButton::clicked, this, &EvaluationCaseCard::runRequested);
    connect(remove, &QToolButton::clicked, this, &EvaluationCaseCard::removeRequested);
    connect(m_input, &TextArea::edited, this, &EvaluationCaseCard::inputEdited);
    connect(m_enumCase, &QComboBox::activated, this,
            [this](int index) { Q_EMIT enumCaseChosen(m_enumCases[index]); });
}

void EvaluationCaseCard::showCase(const Agent& agent, const AgentEvaluationCase& evaluationCase,
                                  int number, const std::set<Uuid>& runningCaseIDs) {
    const bool isRunning = runningCaseIDs.contains(evaluationCase.id);
    m_title->setText(tr("Case %1").arg(number));
    setAccessibleName(m_title->text());
    m_input->showValue(toQt(evaluationCase.input));
    m_run->setVisible(!isRunning);
    m_spinner->setVisible(isRunning);
    m_run->setEnabled(canRunCase(evaluationCase, runningCaseIDs));
    m_verdict->setVisible(evaluationCase.lastPassed.has_value());
    if (evaluationCase.lastPassed) {
        const bool passed = *evaluationCase.lastPassed;
        m_verdict->setIcon(passed ? QStringLiteral("check-circle") : QStringLiteral("x-circle"),
                           passed ? Tone::success : Tone::danger);
        m_verdict->setAccessibleName(passed ? tr("Passed") : tr("Failed"));
        m_verdict->setToolTip(m_verdict->accessibleName());
    }
    showEnumCase(agent, evaluationCase);
    showFields(agent, evaluationCase);
    m_expectedTitle->setVisible(!m_enumCases.isEmpty() || !m_fields.isEmpty());
    m_outputTitle->setVisible(evaluationCase.lastOutput.has_value());
    m_output->setVisible(evaluationCase.lastOutput.has_value());
    m_output->setText(toQt(evaluationCase.lastOutput.value_or(std::string())));
}

void EvaluationCaseCard::showEnumCase(const Agent& agent,
                                      const AgentEvaluationCase& evaluationCase) {
    m_enumCases = valuesOf(expectedEnumChoices(agent));
    m_enumCase->setVisible(!m_enumCases.isEmpty());
    if (!m_enumCases.isEmpty()) {
        showValues(*m_enumCase, m_enumCases, toQt(evaluationCase.expectedEnumCase));
    }
}

void EvaluationCaseCard::addField() {
    const auto index = m_fields.size();
    const QString name = objectName() + QStringLiteral(".field.") + QString::number(index);
    const Field field{new ElidedLabel, new ChoiceBox, new TextField, {}, {}};
    field.title->setObjectName(name + QStringLiteral(".title"));
    field.menu->setObjectName(name + QStringLiteral(".menu"));
    field.text->setObjectName(name + QStringLiteral(".text"));
    field.text->setPlaceholderText(toQt(noExpectationText));
    const auto line = static_cast<int>(index);
    m_grid->addWidget(field.title, line, 0);
    m_grid->addWidget(field.menu, line, 1, Qt::AlignLeft);
    m_grid->addWidget(field.text, line, 1);
    m_fields.append(field);
    connect(field.menu, &QComboBox::activated, this, [this, index](int chosen) {
        Q_EMIT fieldEdited(m_fields[index].name, m_fields[index].values[chosen]);
    });
    connect(field.text, &TextField::edited, this,
            [this, index](const QString& text) { Q_EMIT fieldEdited(m_fields[index].name, text); });
}

void EvaluationCaseCard::showFields(const Agent& agent, const AgentEvaluationCase& evaluationCase) {
    auto fields = expectedFields(agent, evaluationCase);
    m_restOfFields->setText(fields.size() > mostFields ? restText(fields.size() - mostFields)
                                                       : QString());
    m_restOfFields->setVisible(fields.size() > mostFields);
    fields.resize(std::min(fields.size(), mostFields));
    while (m_fields.size() > std::ssize(fields)) {
        const Field field = m_fields.takeLast();
        delete field.title;
        delete field.menu;
        delete field.text;
    }
    for (qsizetype i = 0; i < std::ssize(fields); ++i) {
        if (i == m_fields.size()) {
            addField();
        }
        const ExpectedField& expected = fields[static_cast<std::size_t>(i)];
        Field& field = m_fields[i];
        field.name = toQt(expected.name);
        field.title->setText(expected.name.empty() ? tr("(unnamed)") : field.name);
        field.menu->setAccessibleName(field.title->text());
        field.text->setAccessibleName(field.title->text());
        field.menu->setVisible(expected.choices.has_value());
        field.text->setVisible(!expected.choices);
        if (expected.choices) {
            field.values = valuesOf(*expected.choices);
            showValues(*field.menu, field.values, toQt(expected.value));
        } else {
            field.text->showValue(toQt(expected.value));
        }
    }
}

} // namespace ombrel
