#pragma once

#include "core/BuildSettings.h"
#include "shell/TabPage.h"
#include "shell/tabs/SettingSlider.h"

#include <map>

class QBoxLayout;
class QComboBox;
class QProgressBar;
class QPushButton;

namespace ombrel {

class Banner;
class ChoiceTile;
class ChoiceTileGroup;
class RecipePanel;
class TextField;
class TextLabel;

// The recipe of the selected variant: how the knowledge is built and how questions are answered,
// and beside it what comes of it step by step.
class SettingsTab final : public TabPage {
    Q_OBJECT

  public:
    SettingsTab(std::shared_ptr<AppState> state, StudioServices& services, QWidget* parent);

  protected:
    void refresh() override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QWidget* makeVariantBar();
    QWidget* makeBuildCard();
    QWidget* makeQueryCard();
    void addEnrichment(QVBoxLayout* column);
    SettingSlider* makeSlider(const SettingSlider::Setting& setting, double BuildSettings::*field);
    // Writes to the recipe of the selected variant, unless that changes nothing.
    template <class Change>
    void edit(Change change);
    void refreshVariants();
    void refreshEnrichment();

    Banner* m_staleNote;
    QComboBox* m_variants;
    TextField* m_variantName;
    ChoiceTileGroup* m_chunking;
    SettingSlider* m_targetChunkSize;
    SettingSlider* m_overlap;
    ChoiceTileGroup* m_index;
    std::map<Enrichment, ChoiceTile*> m_enrichments;
    SettingSlider* m_questionsPerChunk;
    QPushButton* m_apply;
    QWidget* m_progressRow;
    QProgressBar* m_progress;
    TextLabel* m_progressText;
    ChoiceTileGroup* m_transform;
    ChoiceTile* m_rerank;
    SettingSlider* m_topK;
    SettingSlider* m_contextBudget;
    RecipePanel* m_recipe;
    QBoxLayout* m_columns;
};

} // namespace ombrel
