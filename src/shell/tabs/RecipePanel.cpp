#include "shell/tabs/RecipePanel.h"

#include "evaluation/EvaluationTexts.h"
#include "export/ExportReadiness.h"
#include "knowledge/BuildTexts.h"
#include "shell/QtText.h"
#include "shell/design/Banner.h"
#include "shell/design/Button.h"
#include "shell/design/Card.h"
#include "shell/design/FactList.h"
#include "shell/design/IconView.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/WrapLayout.h"
#include "shell/tabs/RecipeStepView.h"

#include <cstddef>
#include <utility>

namespace ombrel {

RecipePanel::RecipePanel(std::shared_ptr<AppState> shownState, QWidget* parent)
    : StateView(std::move(shownState), parent), m_figures(new FactList),
      m_spotlightNote(new Banner(Tone::warning)), m_embeddingsNote(new Banner(Tone::warning)) {
    setObjectName(QStringLiteral("recipe"));
    setAccessibleName(toQt(recipeTitle));
    m_spotlightNote->setObjectName(QStringLiteral("recipe.spotlightNote"));
    m_embeddingsNote->setObjectName(QStringLiteral("recipe.embeddingsNote"));

    auto* card = new Card;
    card->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred); // its texts wrap
    card->content()->addWidget(new SectionTitle(toQt(recipeTitle), toQt(recipeNote)));
    card->content()->addSpacing(spacing::tight);
    auto* steps = new QVBoxLayout;
    steps->setSpacing(spacing::hair);
    const std::size_t count = recipeSteps(BuildSettings()).size();
    for (std::size_t i = 1; i <= count; ++i) {
        if (i > 1) {
            steps->addWidget(
                new IconView(QStringLiteral("arrow-down"), Tone::neutral, spacing::icon), 0,
                Qt::AlignHCenter);
        }
        m_steps.push_back(new RecipeStepView(QStringLiteral("recipe.step%1").arg(i)));
        steps->addWidget(m_steps.back());
    }
    card->content()->addLayout(steps);
    card->content()->addSpacing(spacing::small);
    card->content()->addWidget(m_figures);
    card->content()->addWidget(m_spotlightNote);
    card->content()->addWidget(m_embeddingsNote);
    card->content()->addSpacing(spacing::tight);
    card->content()->addWidget(makeButtons());
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(card);
    watchIndex();
}

QWidget* RecipePanel::makeButtons() {
    auto* row = new QWidget;
    row->setLayout(new WrapLayout(spacing::small));
    const auto add = [row](const char* name, const QString& text) {
        auto* button = named(makeButton(text), QLatin1String(name), text);
        row->layout()->addWidget(button);
        return button;
    };
    connect(add("recipe.goToEvaluation", tr("Go to Evaluation")), &QPushButton::clicked, this,
            [this] { state().setSelectedTab(AppTab::evaluation); });
    connect(add("recipe.duplicateVariant", tr("Duplicate as Variant")), &QPushButton::clicked, this,
            [this] { state().duplicateVariant(); });
    return row;
}

void RecipePanel::refresh() {
    const Variant& variant = state().currentVariant();
    const auto steps = recipeSteps(variant.settings);
    for (std::size_t i = 0; i < steps.size(); ++i) {
        m_steps[i]->showStep(steps[i]);
    }
    m_figures->setFact(QStringLiteral("latency"), toQt(measuredLatencyLabel),
                       toQt(measuredLatencyText(variant)));
    m_figures->setFact(QStringLiteral("contentSize"), tr("Indexed content size"),
                       tr("%1 MB").arg(indexedContentMB(state()), 0, 'f', 2));
    m_figures->setFact(QStringLiteral("minimumOS"), tr("Min OS"), tr("iOS 27 · macOS 27"));
    m_spotlightNote->showOrHide(variant.settings.index == IndexKind::spotlight ? toQt(spotlightNote)
                                                                               : QString());
    m_embeddingsNote->showOrHide(needsEmbeddings(state()) ? toQt(missingEmbeddingsNote)
                                                          : QString());
}

} // namespace ombrel
