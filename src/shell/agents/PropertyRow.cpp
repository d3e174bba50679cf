#include "shell/agents/PropertyRow.h"

#include "agents/OutputTexts.h"
#include "agents/PropertyEditing.h"
#include "shell/QtText.h"
#include "shell/agents/EnumCaseListEditor.h"
#include "shell/agents/PropertyListEditor.h"
#include "shell/design/Button.h"
#include "shell/design/ChoiceBox.h"
#include "shell/design/Icon.h"
#include "shell/design/LongText.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextField.h"
#include "shell/design/TextLabel.h"
#include "shell/design/Theme.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <iterator>

namespace ombrel {

namespace {

// Longer and deeper lists are folded away at first, so that a large type is shown at once.
constexpr std::ptrdiff_t mostUnfolded = 12;
constexpr qsizetype deepestUnfolded = 2;

constexpr int widestHeading = 280;

QStringList labelsOf(const std::vector<PropertyKind::BaseKind>& kinds) {
    QStringList labels;
    for (const auto kind : kinds) {
        labels.append(toQt(rawValue(kind)));
    }
    return labels;
}

std::vector<PropertyKind::BaseKind> allKinds() {
    std::vector<PropertyKind::BaseKind> kinds;
    for (const auto& entry : rawValues(PropertyKind::BaseKind{})) {
        kinds.push_back(entry.value);
    }
    return kinds;
}

int indexIn(const std::vector<PropertyKind::BaseKind>& kinds, PropertyKind::BaseKind kind) {
    const auto found = std::ranges::find(kinds, kind);
    return found == kinds.end() ? -1 : static_cast<int>(found - kinds.begin());
}

} // namespace

PropertyRow::PropertyRow(const QString& name, bool allowsNesting, QWidget* parentWidget)
    : QFrame(parentWidget), m_allowsNesting(allowsNesting),
      m_name(named(new TextField(toQt(propertyNamePrompt)), name + QStringLiteral(".name"),
                   tr("Property name"))),
      m_type(named(new ChoiceBox, name + QStringLiteral(".type"), tr("Type"))),
      m_of(new TextLabel(tr("of"), TextRole::body, TextLabel::Ink::secondary)),
      m_element(
          named(new ChoiceBox, name + QStringLiteral(".element"), tr("Type of the elements"))),
      m_optional(
          named(new QCheckBox(tr("Optional")), name + QStringLiteral(".optional"), tr("Optional"))),
      m_description(named(new TextField(toQt(propertyDescriptionPrompt)),
                          name + QStringLiteral(".description"), tr("Property description"))),
      m_fold(new QToolButton), m_nested(new QFrame), m_nestedColumn(new QVBoxLayout) {
    setObjectName(name);
    setFocusProxy(m_name);
    setProperty("card", "flat");
    m_name->setFont(Theme::current().font(TextRole::code));
    m_name->setMinimumWidth(72);
    m_type->showEntries(labelsOf(allKinds()));
    m_element->showEntries(labelsOf(elementKinds()));
    m_fold->setObjectName(name + QStringLiteral(".fold"));
    m_fold->setAccessibleName(tr("What is in this property"));
    m_fold->setFocusPolicy(Qt::TabFocus);
    m_fold->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_fold->setIconSize({spacing::medium, spacing::medium});
    auto* remove = makeIconButton(QStringLiteral("trash"), tr("Remove this property"));
    remove->setObjectName(name + QStringLiteral(".remove"));

    auto* top = new QHBoxLayout;
    top->setSpacing(spacing::small);
    top->addWidget(m_name, 1);
    top->addWidget(m_type);
    top->addWidget(m_of);
    top->addWidget(m_element);
    top->addWidget(m_optional);
    top->addWidget(remove);
    m_nested->setProperty("card", "true");
    m_nested->setLayout(m_nestedColumn);
    m_nestedColumn->setContentsMargins(spacing::small, spacing::small, spacing::small,
                                       spacing::small);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::small, spacing::small, spacing::small, spacing::small);
    column->setSpacing(spacing::small);
    column->addLayout(top);
    column->addWidget(m_description);
    column->addWidget(m_fold, 0, Qt::AlignLeft);
    column->addWidget(m_nested);
    m_fold->hide();
    m_nested->hide();

    connect(m_name, &TextField::edited, this, [this](const QString& text) {
        m_property.name = fromQt(text);
        showKind();
        Q_EMIT changed();
    });
    connect(m_description, &TextField::edited, this, [this](const QString& text) {
        m_property.description = storedDescription(fromQt(text));
        Q_EMIT changed();
    });
    connect(m_optional, &QCheckBox::clicked, this, [this](bool isOptional) {
        m_property.isOptional = isOptional;
        Q_EMIT changed();
    });
    connect(m_type, &QComboBox::activated, this, [this](int index) {
        setKind(kindAfterChange(allKinds()[static_cast<std::size_t>(index)], m_property.kind));
    });
    connect(m_element, &QComboBox::activated, this, [this](int index) {
        setKind(kindAfterElementChange(elementKinds()[static_cast<std::size_t>(index)],
                                       m_property.kind));
    });
    connect(m_fold, &QToolButton::clicked, this, [this] {
        m_isUnfolded = !m_isUnfolded;
        showNested();
    });
    connect(remove, &QToolButton::clicked, this, &PropertyRow::removeRequested);
}

void PropertyRow::showValue(const AgentProperty& property) {
    const bool isOther = property.id != m_property.id;
    m_property = property;
    if (isOther) {
        const auto* properties = nestedProperties(m_property.kind);
        const auto* cases = nestedCases(m_property.kind);
        const auto count = properties ? std::ssize(*properties) : cases ? std::ssize(*cases) : 0;
        const auto depth = objectName().count(QStringLiteral(".properties"));
        m_isUnfolded = count <= mostUnfolded && depth <= deepestUnfolded;
    }
    m_name->showValue(toQt(m_property.name));
    m_description->showValue(toQt(m_property.description.value_or(std::string())));
    m_optional->setChecked(m_property.isOptional);
    showKind();
}

void PropertyRow::setKind(PropertyKind kind) {
    if (kind == m_property.kind) {
        showKind(); // the menu shows what was picked, and not what it is
        return;
    }
    m_property.kind = std::move(kind);
    showKind();
    Q_EMIT changed();
}

void PropertyRow::showKind() {
    m_type->showChoice(indexIn(allKinds(), m_property.kind.baseKind()));
    const auto* array = std::get_if<PropertyKind::Array>(&m_property.kind.value);
    m_of->setVisible(m_allowsNesting && array);
    m_element->setVisible(m_allowsNesting && array);
    if (array) {
        m_element->showChoice(indexIn(elementKinds(), array->element->baseKind()),
                              toQt(array->element->typeLabel()));
    }
    showNested();
}

void PropertyRow::showNested() {
    const auto* properties = m_allowsNesting ? nestedProperties(m_property.kind) : nullptr;
    const auto* cases = m_allowsNesting ? nestedCases(m_property.kind) : nullptr;
    m_fold->setVisible(properties || cases);
    m_fold->setIcon(
        themeIcon(m_isUnfolded ? QStringLiteral("chevron-down") : QStringLiteral("chevron-right")));
    const QString heading = toQt(properties ? nestedPropertiesHeading(m_property.name)
                                            : nestedCasesHeading(m_property.name));
    const QString elided = m_fold->fontMetrics().elidedText(heading, Qt::ElideRight, widestHeading);
    // An "&" in the text of a button would be the mark of a key.
    m_fold->setText(QString(elided).replace(QLatin1Char('&'), QLatin1String("&&")));
    m_fold->setToolTip(elided == heading ? QString() : toolTipText(heading));
    m_fold->setAccessibleName(heading);
    if (properties && m_isUnfolded) {
        if (!m_properties) {
            m_properties = new PropertyListEditor(objectName() + QStringLiteral(".properties"), {},
                                                  true, m_nested);
            m_nestedColumn->addWidget(m_properties);
            connect(m_properties, &PropertyListEditor::changed, this, &PropertyRow::takeNested);
        }
        m_properties->setProperties(*properties);
    }
    if (cases && m_isUnfolded) {
        if (!m_cases) {
            m_cases = new EnumCaseListEditor(objectName() + QStringLiteral(".cases"), {}, m_nested);
            m_nestedColumn->addWidget(m_cases);
            connect(m_cases, &EnumCaseListEditor::changed, this, &PropertyRow::takeNested);
        }
        m_cases->setCases(*cases);
    }
    if (m_properties) {
        m_properties->setVisible(properties);
    }
    if (m_cases) {
        m_cases->setVisible(cases);
    }
    m_nested->setVisible((properties || cases) && m_isUnfolded);
}

void PropertyRow::takeNested() {
    if (auto* properties = nestedProperties(m_property.kind)) {
        *properties = m_properties->properties();
    } else if (auto* cases = nestedCases(m_property.kind)) {
        *cases = m_cases->cases();
    }
    Q_EMIT changed();
}

} // namespace ombrel
