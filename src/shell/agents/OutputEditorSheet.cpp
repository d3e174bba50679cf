#include "shell/agents/OutputEditorSheet.h"

#include "agents/OutputExample.h"
#include "agents/OutputTexts.h"
#include "shell/QtText.h"
#include "shell/agents/EnumCaseListEditor.h"
#include "shell/agents/GenerableImportSheet.h"
#include "shell/agents/PropertyListEditor.h"
#include "shell/design/Button.h"
#include "shell/design/Icon.h"
#include "shell/design/IconView.h"
#include "shell/design/Named.h"
#include "shell/design/ResizeOnScreen.h"
#include "shell/design/SegmentedControl.h"
#include "shell/design/Spacing.h"
#include "shell/design/TabOrder.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"

#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

namespace {

constexpr int burstPause = 400; // ms without typing after which undo has another step

QScrollArea* scrolling(QWidget* inside) {
    auto* page = new QWidget;
    page->setProperty("page", "true");
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(0, 0, spacing::small, 0);
    column->addWidget(inside);
    column->addStretch(1);
    auto* area = new QScrollArea;
    area->setWidgetResizable(true);
    area->setObjectName(inside->objectName() + QStringLiteral(".scroll"));
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(page);
    return area;
}

} // namespace

OutputEditorSheet::OutputEditorSheet(const AgentOutputKind& output,
                                     std::shared_ptr<MainExecutor> executor, OnSave onSave,
                                     QWidget* over)
    : QDialog(over), m_executor(std::move(executor)), m_onSave(std::move(onSave)), m_draft(output),
      m_checkpoint(output),
      m_kind(named(new SegmentedControl, QStringLiteral("output.kind"), tr("Returns"))),
      m_help((new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary))->wrapping()),
      m_cases(new EnumCaseListEditor(QStringLiteral("output.cases"), tr("Cases"))),
      m_properties(
          new PropertyListEditor(QStringLiteral("output.properties"), tr("Properties"), true)),
      m_exampleHeading(new TextLabel({}, TextRole::strong)),
      m_exampleText(
          named(new QPlainTextEdit, QStringLiteral("output.example.text"), tr("Example output"))),
      m_problemIcon(new IconView(QStringLiteral("alert"), Tone::warning, spacing::icon)),
      m_problem((new TextLabel({}, TextRole::body, TextLabel::Ink::warning))->wrapping()),
      m_save(named(makeButton(tr("Save"), ButtonKind::primary), QStringLiteral("output.save"),
                   tr("Save"))) {
    setObjectName(QStringLiteral("outputSheet"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Edit Output"));
    setAccessibleName(windowTitle());
    setSizeGripEnabled(true);
    m_help->setObjectName(QStringLiteral("output.help"));
    m_burst.setSingleShot(true);
    m_burst.setInterval(burstPause);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::large);
    column->setSpacing(spacing::small);
    column->addWidget(new TextLabel(windowTitle(), TextRole::heading));
    column->addSpacing(spacing::tight);
    for (const auto& kind : rawValues(AgentOutputKind::Kind{})) {
        m_kind->add(toQt(kind.raw).toLower(), toQt(kind.raw));
    }
    auto* import = named(makeButton(toQt(importGenerableLabel)), QStringLiteral("output.import"),
                         toQt(importGenerableLabel));
    import->setIcon(themeIcon(QStringLiteral("upload")));
    import->setToolTip(toQt(importGenerableHelp));
    auto* returns = new QHBoxLayout;
    returns->setSpacing(spacing::medium);
    returns->addWidget(new TextLabel(tr("Returns"), TextRole::strong));
    returns->addWidget(m_kind);
    returns->addStretch(1);
    returns->addWidget(import);
    column->addLayout(returns);
    auto* importHelp =
        (new TextLabel(toQt(importGenerableHelp), TextRole::caption, TextLabel::Ink::secondary))
            ->wrapping();
    importHelp->setObjectName(QStringLiteral("output.import.help"));
    importHelp->setAlignment(Qt::AlignRight | Qt::AlignTop);
    auto* helps = new QHBoxLayout;
    helps->setSpacing(spacing::large);
    helps->addWidget(m_help, 1);
    helps->addWidget(importHelp, 1);
    column->addLayout(helps);
    column->addSpacing(spacing::small);
    auto* middle = new QHBoxLayout;
    middle->setSpacing(spacing::large);
    middle->addWidget(makeEditors(), 8);
    middle->addWidget(makeExample(), 5);
    column->addLayout(middle, 1);
    column->addSpacing(spacing::tight);
    column->addLayout(makeFoot());
    setMinimumSize(860, 480);
    resizeOnScreen(*this, {980, 640});

    connect(m_kind, &SegmentedControl::chosen, this, [this](int index) {
        m_draft.setKind(rawValues(AgentOutputKind::Kind{})[static_cast<std::size_t>(index)].value);
        draftChanged();
    });
    connect(m_cases, &EnumCaseListEditor::changed, this, [this] {
        m_draft.setCases(m_cases->cases());
        draftChanged();
    });
    connect(m_properties, &PropertyListEditor::changed, this, [this] {
        m_draft.setProperties(m_properties->properties());
        draftChanged();
    });
    connect(import, &QPushButton::clicked, this, &OutputEditorSheet::chooseImport);
    connect(&m_burst, &QTimer::timeout, this, &OutputEditorSheet::takeCheckpoint);
    auto* undoes = new QShortcut(QKeySequence::Undo, this);
    undoes->setObjectName(QStringLiteral("output.undo"));
    connect(undoes, &QShortcut::activated, this, [this] { step(m_undo, m_redo); });
    auto* redoes = new QShortcut(QKeySequence::Redo, this);
    redoes->setObjectName(QStringLiteral("output.redo"));
    connect(redoes, &QShortcut::activated, this, [this] { step(m_redo, m_undo); });
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* saves = new QShortcut(QKeySequence(Qt::CTRL | key), this);
        saves->setObjectName(QStringLiteral("output.saveByKey"));
        connect(saves, &QShortcut::activated, this, &OutputEditorSheet::save);
    }
    showDraft();
}

QWidget* OutputEditorSheet::makeEditors() {
    m_editors = new QStackedWidget;
    auto* text = new QWidget;
    m_editors->addWidget(text);
    m_editors->addWidget(scrolling(m_cases));
    m_editors->addWidget(scrolling(m_properties));
    return m_editors;
}

QWidget* OutputEditorSheet::makeExample() {
    m_example = new QFrame;
    m_example->setObjectName(QStringLiteral("output.example"));
    m_example->setProperty("card", "flat");
    m_exampleHeading->setObjectName(QStringLiteral("output.example.heading"));
    m_exampleText->setReadOnly(true);
    m_exampleText->setTabChangesFocus(true);
    m_exampleText->setFont(Theme::current().font(TextRole::code));
    auto* note = (new TextLabel(toQt(exampleNote), TextRole::caption, TextLabel::Ink::secondary))
                     ->wrapping();
    note->setObjectName(QStringLiteral("output.example.note"));
    auto* column = new QVBoxLayout(m_example);
    column->setContentsMargins(spacing::medium, spacing::medium, spacing::medium, spacing::medium);
    column->setSpacing(spacing::small);
    column->addWidget(m_exampleHeading);
    column->addWidget(m_exampleText, 1);
    column->addWidget(note);
    return m_example;
}

QLayout* OutputEditorSheet::makeFoot() {
    m_problem->setObjectName(QStringLiteral("output.problem"));
    auto* cancel = named(makeButton(tr("Cancel")), QStringLiteral("output.cancel"), tr("Cancel"));
    // Return in a field of a row is not the end of the edit.
    cancel->setAutoDefault(false);
    m_save->setAutoDefault(false);
    m_save->setToolTip(tr("Ctrl+Return"));
    connect(cancel, &QPushButton::clicked, this, &OutputEditorSheet::reject);
    connect(m_save, &QPushButton::clicked, this, &OutputEditorSheet::save);
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing::small);
    row->addWidget(m_problemIcon);
    row->addWidget(m_problem, 1);
    row->addWidget(cancel);
    row->addWidget(m_save);
    return row;
}

bool OutputEditorSheet::focusNextPrevChild(bool next) {
    orderTabsByLayout(*this);
    return QDialog::focusNextPrevChild(next);
}

void OutputEditorSheet::draftChanged() {
    m_burst.start();
    showDraft();
}

void OutputEditorSheet::showDraft() {
    const AgentOutputKind& output = m_draft.output();
    const AgentOutputKind::Kind kind = output.kind();
    m_kind->setCurrentIndex(static_cast<int>(output.value.index()));
    m_help->setText(toQt(outputHelp(kind)));
    m_editors->setCurrentIndex(static_cast<int>(output.value.index()));
    m_editors->setVisible(kind != AgentOutputKind::Kind::text);
    if (const auto* enumeration = std::get_if<AgentOutputKind::Enumeration>(&output.value)) {
        m_cases->setCases(enumeration->cases);
    } else if (const auto* object = std::get_if<AgentOutputKind::Object>(&output.value)) {
        m_properties->setProperties(object->properties);
    }

    const auto example = exampleJSON(output);
    m_example->setVisible(example.has_value());
    m_exampleHeading->setText(toQt(exampleHeading(kind)));
    const bool isCode = kind != AgentOutputKind::Kind::text;
    m_exampleText->setLineWrapMode(isCode ? QPlainTextEdit::NoWrap : QPlainTextEdit::WidgetWidth);
    if (const QString text = toQt(example.value_or(std::string()));
        text != m_exampleText->toPlainText()) {
        const int place = m_exampleText->verticalScrollBar()->value();
        m_exampleText->setPlainText(text);
        m_exampleText->verticalScrollBar()->setValue(place);
    }

    const auto problem = validationMessage(output);
    m_problem->setText(problem ? toQt(*problem) : QString());
    m_problemIcon->setVisible(problem.has_value());
    m_save->setEnabled(!problem);
}

void OutputEditorSheet::takeCheckpoint() {
    m_burst.stop();
    m_undo.push_back(std::move(m_checkpoint));
    m_redo.clear();
    m_checkpoint = m_draft;
}

void OutputEditorSheet::step(std::vector<OutputDraft>& from, std::vector<OutputDraft>& to) {
    if (m_burst.isActive()) {
        takeCheckpoint();
    }
    if (!from.empty()) {
        to.push_back(std::move(m_draft));
        m_draft = std::move(from.back());
        from.pop_back();
        m_checkpoint = m_draft;
        showDraft();
    }
}

void OutputEditorSheet::chooseImport() {
    auto* sheet = new GenerableImportSheet(
        m_executor,
        [this](const AgentOutputKind& imported) {
            m_draft.import(imported);
            draftChanged();
        },
        this);
    sheet->open();
}

void OutputEditorSheet::save() {
    if (m_save->isEnabled()) {
        m_onSave(m_draft.output());
        accept();
    }
}

} // namespace ombrel
