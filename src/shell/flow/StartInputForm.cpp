#include "shell/flow/StartInputForm.h"

#include "shell/QtText.h"
#include "shell/design/ChoiceBox.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextArea.h"
#include "shell/design/TextField.h"
#include "shell/flow/FormField.h"

#include <QScrollArea>
#include <QVBoxLayout>

#include <utility>

namespace ombrel {

namespace {

using BaseKind = PropertyKind::BaseKind;

constexpr int areaHeight = 64;

QString hintFor(BaseKind kind) {
    switch (kind) {
    case BaseKind::integer:
        return QStringLiteral("0");
    case BaseKind::number:
        return QStringLiteral("0.0");
    case BaseKind::boolean:
        return StartInputForm::tr("true or false");
    case BaseKind::object:
    case BaseKind::array:
        return StartInputForm::tr("As JSON");
    case BaseKind::string:
    case BaseKind::enumeration:
        break;
    }
    return {};
}

QStringList caseNames(const PropertyKind::Enumeration& kind) {
    QStringList names;
    for (const AgentEnumCase& enumCase : kind.cases) {
        names.append(toQt(enumCase.name));
    }
    return names;
}

} // namespace

StartInputForm::StartInputForm(std::shared_ptr<AppState> shownState, Uuid flowID, QWidget* parent)
    : StateView(std::move(shownState), parent), m_flowID(flowID), m_column(nullptr) {
    named(this, QStringLiteral("debug.input"), tr("Start input"));
    auto* area = new QScrollArea;
    area->setWidgetResizable(true);
    area->setFocusPolicy(Qt::NoFocus);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* page = new QWidget;
    m_column = makeInspectorColumn(page);
    m_column->addWidget(new SectionTitle(tr("START INPUT"), {}, TextRole::overline));
    m_column->addStretch(1);
    area->setWidget(page);
    auto* whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(area);
    setMinimumWidth(200);
    watch(state().flows);
    watch(state().flowSampleInputValues);
}

void StartInputForm::refresh() {
    const Flow* flow = state().flow(m_flowID);
    if (!flow) {
        return;
    }
    if (flow->startInput != m_fields) {
        makeFields(flow->startInput);
    }
    for (std::size_t i = 0; i < m_fields.size(); ++i) {
        showValue(m_controls[i], m_fields[i]);
    }
}

void StartInputForm::makeFields(const std::vector<AgentProperty>& fields) {
    m_fields = fields;
    m_controls.clear();
    while (m_column->count() > 2) {
        QLayoutItem* const item = m_column->takeAt(1);
        for (QWidget* part : item->widget()->findChildren<QWidget*>()) {
            part->setObjectName({});
        }
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    for (const AgentProperty& field : fields) {
        QWidget* const control = makeControl(field);
        control->setObjectName(QStringLiteral("debug.input.%1").arg(m_controls.size()));
        control->setAccessibleName(toQt(field.name));
        control->setToolTip(field.description ? toQt(*field.description) : QString());
        m_controls.push_back(control);
        const QString label =
            toQt(field.name.empty() ? tr("(no name)").toStdString() : field.name) +
            QStringLiteral("  \u00b7  ") + toQt(field.kind.typeLabel());
        m_column->insertWidget(m_column->count() - 1, makeFormField(label, control));
    }
}

QWidget* StartInputForm::makeControl(const AgentProperty& field) {
    const BaseKind kind = field.kind.baseKind();
    const std::string& name = field.name;
    if (kind == BaseKind::string || kind == BaseKind::object || kind == BaseKind::array) {
        auto* area = new TextArea(hintFor(kind));
        area->setFixedHeight(areaHeight);
        connect(area, &TextArea::edited, this,
                [this, name](const QString& text) { setValue(name, text); });
        return area;
    }
    if (const auto* enumeration = std::get_if<PropertyKind::Enumeration>(&field.kind.value)) {
        auto* box = new ChoiceBox;
        const QStringList names = caseNames(*enumeration);
        box->showEntries(names);
        connect(box, &QComboBox::activated, this,
                [this, name, names](int index) { setValue(name, names.value(index)); });
        return box;
    }
    auto* line = new TextField(hintFor(kind));
    connect(line, &TextField::edited, this,
            [this, name](const QString& text) { setValue(name, text); });
    return line;
}

void StartInputForm::showValue(QWidget* control, const AgentProperty& field) {
    const auto typed = state().flowSampleInputValues->find(field.name);
    const QString text =
        typed == state().flowSampleInputValues->end() ? QString() : toQt(typed->second);
    if (auto* area = qobject_cast<TextArea*>(control)) {
        area->showValue(text);
    } else if (auto* line = qobject_cast<TextField*>(control)) {
        line->showValue(text);
    } else if (auto* box = qobject_cast<ChoiceBox*>(control)) {
        box->showChoice(box->findText(text), text.isEmpty() ? tr("Choose\u2026") : text);
    }
}

void StartInputForm::setValue(const std::string& name, const QString& value) {
    (*state().flowSampleInputValues.edit())[name] = fromQt(value);
}

} // namespace ombrel
