#include "shell/tabs/RecipeStepView.h"

#include "shell/QtText.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QVBoxLayout>

namespace ombrel {

RecipeStepView::RecipeStepView(const QString& name, QWidget* parent)
    : QFrame(parent), m_title((new TextLabel({}, TextRole::strong))->wrapping()),
      m_tag((new TextLabel({}, TextRole::caption, TextLabel::Ink::accent))->wrapping()),
      m_example((new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary))->wrapping()) {
    setObjectName(name);
    setProperty("card", "flat");
    m_title->setObjectName(name + QStringLiteral(".title"));
    m_tag->setObjectName(name + QStringLiteral(".tag"));
    m_example->setObjectName(name + QStringLiteral(".example"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::medium, spacing::small, spacing::medium, spacing::small);
    column->setSpacing(spacing::hair);
    column->addWidget(m_title);
    column->addWidget(m_tag);
    column->addSpacing(spacing::hair);
    column->addWidget(m_example);
}

void RecipeStepView::showStep(const RecipeStep& step) {
    m_title->setText(toQt(step.title));
    m_tag->setText(toQt(step.tag));
    m_example->setText(toQt(step.example));
    setAccessibleName(m_title->text());
    setAccessibleDescription(m_tag->text() + QStringLiteral(". ") + m_example->text());
}

} // namespace ombrel
