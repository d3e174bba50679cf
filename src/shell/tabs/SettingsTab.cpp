#include "shell/tabs/SettingsTab.h"

#include "core/ProgressText.h"
#include "core/SettingRange.h"
#include "knowledge/Build.h"
#include "knowledge/BuildTexts.h"
#include "knowledge/RecipeTexts.h"
#include "shell/QtText.h"
#include "shell/design/Banner.h"
#include "shell/design/Button.h"
#include "shell/design/Card.h"
#include "shell/design/ChoiceTile.h"
#include "shell/design/ChoiceTileGroup.h"
#include "shell/design/LongText.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextField.h"
#include "shell/glossary/HelpButton.h"
#include "shell/tabs/RecipePanel.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QGridLayout>
#include <QProgressBar>
#include <QResizeEvent>

#include <algorithm>
#include <iterator>
#include <utility>

namespace ombrel {

namespace {

// The least that a tile with a subtitle is wide, and one with a title only.
constexpr int tileWidth = 200;
constexpr int titleTileWidth = 140;

// What an object name calls it: "headingaware" for "Heading-aware".
QString wordOf(std::string_view raw) {
    QString word;
    for (const QChar c : toQt(raw)) {
        if (c.isLetter()) {
            word += c.toLower();
        }
    }
    return word;
}

SectionTitle* makeGroupTitle(const QString& title, GlossaryTopic topic) {
    auto* result = new SectionTitle(title, {}, TextRole::overline);
    result->setHelp(new HelpButton(topic));
    return result;
}

// A card whose height goes by its width.
Card* makeCard() {
    auto* card = new Card;
    card->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    return card;
}

// What the tile at the place stands for: tiles are in the order of the cases.
template <RawEnum E>
E valueAt(int place) {
    return rawValues(E{})[static_cast<std::size_t>(place)].value;
}

template <RawEnum E>
ChoiceTileGroup* makeTiles(const QString& name, const QString& what) {
    constexpr bool hasSubtitles = requires(E value) { subtitle(value); };
    auto* group = named(new ChoiceTileGroup(hasSubtitles ? tileWidth : titleTileWidth), name, what);
    for (const auto& [value, raw] : rawValues(E{})) {
        QString text;
        if constexpr (hasSubtitles) {
            text = toQt(subtitle(value));
        }
        group->add(wordOf(raw), toQt(raw), text);
    }
    return group;
}

} // namespace

SettingsTab::SettingsTab(std::shared_ptr<AppState> shownState, StudioServices& sharedServices,
                         QWidget* parent)
    : TabPage(AppTab::settings, Body::scrolls, std::move(shownState), sharedServices, parent),
      m_staleNote(new Banner(Tone::warning)),
      m_variants(named(new QComboBox, QStringLiteral("settings.variant"), tr("Variant"))),
      m_variantName(named(new TextField(tr("Variant name")), QStringLiteral("settings.variantName"),
                          tr("Variant name"))),
      m_chunking(makeTiles<ChunkingStrategy>(QStringLiteral("settings.chunking"), tr("Chunking"))),
      m_targetChunkSize(
          makeSlider({QStringLiteral("settings.targetChunkSize"), tr("Target chunk size"),
                      targetChunkSizeRange, 10, GlossaryTopic::chunkSize},
                     &BuildSettings::targetChunkSize)),
      m_overlap(makeSlider({QStringLiteral("settings.overlap"), tr("Overlap"), overlapPercentRange,
                            1, GlossaryTopic::overlap},
                           &BuildSettings::overlapPercent)),
      m_index(makeTiles<IndexKind>(QStringLiteral("settings.index"), tr("Index"))),
      m_questionsPerChunk(
          makeSlider({QStringLiteral("settings.questionsPerChunk"), tr("Questions per chunk"),
                      generatedQuestionsPerChunkRange, 1, std::nullopt},
                     &BuildSettings::generatedQuestionsPerChunk)),
      m_apply(named(makeButton(toQt(applyToExistingChunksLabel)), QStringLiteral("settings.apply"),
                    toQt(applyToExistingChunksLabel))),
      m_progressRow(new QWidget),
      m_progress(named(new QProgressBar, QStringLiteral("settings.enrichProgress"),
                       tr("Enrichment progress"))),
      m_progressText(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_transform(makeTiles<QueryTransform>(QStringLiteral("settings.transform"), tr("Transform"))),
      m_rerank(named(
          new ChoiceTile(tr("Rerank with model"), tr("Reorder the top results; +1 model call")),
          QStringLiteral("settings.rerank"), tr("Rerank with model"))),
      m_topK(makeSlider(
          {QStringLiteral("settings.topK"), tr("Top-k"), topKRange, 1, GlossaryTopic::topK},
          &BuildSettings::topK)),
      m_contextBudget(makeSlider({QStringLiteral("settings.contextBudget"), tr("Context budget"),
                                  contextBudgetRange, 100, GlossaryTopic::contextBudget},
                                 &BuildSettings::contextBudget)),
      m_recipe(new RecipePanel(sharedState())), m_columns(new QBoxLayout(QBoxLayout::LeftToRight)) {
    m_staleNote->setObjectName(QStringLiteral("settings.staleNote"));
    content()->addWidget(m_staleNote);
    content()->addWidget(makeVariantBar());
    auto* controls = new QVBoxLayout;
    controls->setSpacing(spacing::large);
    controls->addWidget(makeBuildCard());
    controls->addWidget(makeQueryCard());
    controls->addStretch(1);
    m_columns->setSpacing(spacing::large);
    m_columns->addLayout(controls, 5);
    m_columns->addWidget(m_recipe, 3, Qt::AlignTop);
    content()->addLayout(m_columns);
    watchIndex();
    watch(state().project);
}

template <class Change>
void SettingsTab::edit(Change change) {
    Variant variant = state().currentVariant();
    const BuildSettings before = variant.settings;
    change(variant.settings);
    if (variant.settings != before) {
        state().updateVariant(variant);
    }
}

QWidget* SettingsTab::makeVariantBar() {
    m_variants->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_variants->setMinimumContentsLength(12);
    m_variants->setSizePolicy(QSizePolicy::Expanding,
                              QSizePolicy::Preferred); // as high as the name
    m_variants->setFocusPolicy(Qt::TabFocus);
    m_variants->installEventFilter(this);
    connect(m_variants, &QComboBox::activated, this, [this](int item) {
        const QString id = m_variants->itemData(item).toString();
        const auto index = state().editCurrentIndex();
        for (const Variant& variant : index->variants) {
            if (toQt(variant.id.text()) == id) {
                index->selectedVariantID = variant.id;
            }
        }
    });
    connect(m_variantName, &TextField::edited, this, [this](const QString& text) {
        Variant variant = state().currentVariant();
        variant.name = fromQt(text);
        state().updateVariant(variant);
    });
    auto* card = new Card;
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(spacing::large);
    grid->setVerticalSpacing(spacing::tight);
    const auto add = [grid](int column, const QString& label, QWidget* control) {
        auto* title = new TextLabel(label, TextRole::overline, TextLabel::Ink::secondary);
        title->setBuddy(control);
        grid->addWidget(title, 0, column);
        grid->addWidget(control, 1, column);
        grid->setColumnStretch(column, 1);
    };
    add(0, tr("VARIANT"), m_variants);
    add(1, tr("NAME"), m_variantName);
    card->content()->addLayout(grid);
    return card;
}

SettingSlider* SettingsTab::makeSlider(const SettingSlider::Setting& setting,
                                       double BuildSettings::*field) {
    auto* slider = new SettingSlider(setting);
    connect(slider, &SettingSlider::moved, this, [this, field](double value) {
        edit([&](BuildSettings& settings) { settings.*field = value; });
    });
    return slider;
}

QWidget* SettingsTab::makeBuildCard() {
    auto* card = makeCard();
    QVBoxLayout* column = card->content();
    column->addWidget(new SectionTitle(tr("Index build method")));
    column->addSpacing(spacing::tight);
    column->addWidget(makeGroupTitle(tr("CHUNKING"), GlossaryTopic::chunkingStrategy));
    column->addWidget(m_chunking);
    column->addSpacing(spacing::tight);
    column->addWidget(m_targetChunkSize);
    column->addWidget(m_overlap);
    column->addSpacing(spacing::small);
    column->addWidget(makeGroupTitle(tr("INDEX"), GlossaryTopic::index));
    column->addWidget(m_index);
    column->addSpacing(spacing::small);
    addEnrichment(column);
    connect(m_chunking, &ChoiceTileGroup::chosen, this, [this](int item) {
        edit([&](BuildSettings& settings) { settings.chunking = valueAt<ChunkingStrategy>(item); });
    });
    connect(m_index, &ChoiceTileGroup::chosen, this, [this](int item) {
        edit([&](BuildSettings& settings) { settings.index = valueAt<IndexKind>(item); });
    });
    return card;
}

void SettingsTab::addEnrichment(QVBoxLayout* column) {
    column->addWidget(makeGroupTitle(tr("ENRICHMENT"), GlossaryTopic::enrichment));
    auto* tiles = new QVBoxLayout;
    tiles->setSpacing(spacing::small);
    for (const auto& [enrichment, raw] : rawValues(Enrichment{})) {
        auto* tile = new ChoiceTile(toQt(raw), toQt(subtitle(enrichment)));
        tile->setObjectName(QStringLiteral("settings.enrichment.") + wordOf(raw));
        tile->setMark(ChoiceTile::Mark::check);
        tiles->addWidget(tile);
        m_enrichments[enrichment] = tile;
        connect(tile, &ChoiceTile::clicked, this, [this, which = enrichment](bool isOn) {
            edit([&](BuildSettings& settings) {
                if (isOn) {
                    settings.enrichments.insert(which);
                } else {
                    settings.enrichments.erase(which);
                }
            });
        });
    }
    column->addLayout(tiles);
    m_questionsPerChunk->setContentsMargins(0, spacing::small, 0, 0);
    column->addWidget(m_questionsPerChunk);
    column->addWidget(
        (new TextLabel(toQt(enrichmentCostNote), TextRole::caption, TextLabel::Ink::secondary))
            ->wrapping());
    column->addWidget(m_apply);
    auto* progressRow = new QHBoxLayout(m_progressRow);
    progressRow->setContentsMargins(0, spacing::small, 0, spacing::small);
    progressRow->setSpacing(spacing::medium);
    m_progress->setTextVisible(false);
    m_progressText->setObjectName(QStringLiteral("settings.enrichProgressText"));
    progressRow->addWidget(m_progress, 1);
    progressRow->addWidget(m_progressText);
    column->addWidget(m_progressRow);
    connect(m_apply, &QPushButton::clicked, this,
            [this] { spawn(applyEnrichment(sharedState())); });
}

QWidget* SettingsTab::makeQueryCard() {
    auto* card = makeCard();
    QVBoxLayout* column = card->content();
    column->addWidget(new SectionTitle(tr("Query method")));
    column->addSpacing(spacing::tight);
    column->addWidget(makeGroupTitle(tr("TRANSFORM"), GlossaryTopic::queryTransform));
    column->addWidget(m_transform);
    column->addSpacing(spacing::small);
    m_rerank->setMark(ChoiceTile::Mark::check);
    auto* rerank = new QHBoxLayout;
    rerank->setSpacing(spacing::tight);
    rerank->addWidget(m_rerank, 1);
    rerank->addWidget(new HelpButton(GlossaryTopic::rerank), 0, Qt::AlignVCenter);
    column->addLayout(rerank);
    column->addSpacing(spacing::tight);
    column->addWidget(m_topK);
    column->addWidget(m_contextBudget);
    connect(m_transform, &ChoiceTileGroup::chosen, this, [this](int item) {
        edit([&](BuildSettings& settings) { settings.transform = valueAt<QueryTransform>(item); });
    });
    connect(m_rerank, &ChoiceTile::clicked, this,
            [this](bool isOn) { edit([&](BuildSettings& settings) { settings.rerank = isOn; }); });
    return card;
}

void SettingsTab::refresh() {
    const BuildSettings& settings = state().currentVariant().settings;
    m_staleNote->showOrHide(settingsChangedSinceBuild(state()) ? desktopText(staleSettingsNote)
                                                               : QString());
    refreshVariants();
    m_chunking->setCurrentIndex(static_cast<int>(settings.chunking));
    m_targetChunkSize->showValue(settings.targetChunkSize, toQt(targetChunkSizeText(settings)));
    m_overlap->showValue(settings.overlapPercent, toQt(overlapPercentText(settings)));
    m_index->setCurrentIndex(static_cast<int>(settings.index));
    refreshEnrichment();
    for (const auto& [transform, raw] : rawValues(QueryTransform{})) {
        const auto reason = disabledReason(transform, settings.index);
        m_transform->tile(static_cast<int>(transform))
            ->setDisabledReason(reason ? toQt(*reason) : QString());
    }
    m_transform->setCurrentIndex(static_cast<int>(settings.transform));
    m_rerank->setChecked(settings.rerank);
    m_topK->showValue(settings.topK, toQt(topKText(settings)));
    m_contextBudget->showValue(settings.contextBudget, toQt(contextBudgetText(settings)));
}

void SettingsTab::refreshVariants() {
    const RAGIndex& index = state().currentIndex();
    const Variant& current = state().currentVariant();
    constexpr int arrowRoom = 44; // the margins and the arrow of the list
    constexpr int shortest = 160;
    int item = 0;
    for (const Variant& variant : index.variants) {
        const QString whole = toQt(variant.summaryLabel());
        const QString label = m_variants->fontMetrics().elidedText(
            whole, Qt::ElideRight, std::max(m_variants->width(), shortest) - arrowRoom);
        if (item == m_variants->count()) {
            m_variants->addItem(QString());
        }
        if (m_variants->itemText(item) != label) {
            m_variants->setItemText(item, label);
        }
        m_variants->setItemData(item, toQt(variant.id.text()));
        m_variants->setItemData(item, toolTipText(whole), Qt::ToolTipRole);
        if (&variant == &current) {
            m_variants->setCurrentIndex(item);
            m_variants->setToolTip(toolTipText(whole));
        }
        item += 1;
    }
    while (m_variants->count() > item) {
        m_variants->removeItem(item);
    }
    m_variantName->showValue(toQt(current.name));
}

void SettingsTab::refreshEnrichment() {
    const RAGIndex& index = state().currentIndex();
    const BuildSettings& settings = state().currentVariant().settings;
    for (const auto& [enrichment, tile] : m_enrichments) {
        tile->setChecked(settings.enrichments.contains(enrichment));
    }
    m_questionsPerChunk->setVisible(settings.enrichments.contains(Enrichment::generatedQuestions));
    m_questionsPerChunk->showValue(settings.generatedQuestionsPerChunk,
                                   toQt(generatedQuestionsPerChunkText(settings)));
    m_apply->setVisible(!index.isEnriching);
    m_progressRow->setVisible(index.isEnriching);
    if (index.isEnriching) {
        const Progress progress = index.enrichProgress.value_or(Progress{});
        m_progress->setMaximum(static_cast<int>(std::max<std::int64_t>(progress.total, 1)));
        m_progress->setValue(static_cast<int>(progress.completed));
        m_progressText->setText(toQt(progressText(progress)));
    }
}

bool SettingsTab::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_variants && event->type() == QEvent::Wheel) {
        // The wheel moves the page, also over the list of variants.
        event->ignore();
        return true;
    }
    if (watched == m_variants && event->type() == QEvent::Resize) {
        refreshLater(); // its names are cut to its width
    }
    return TabPage::eventFilter(watched, event);
}

void SettingsTab::resizeEvent(QResizeEvent* event) {
    TabPage::resizeEvent(event);
    constexpr int roomForBoth = 860;
    m_columns->setDirection(width() >= roomForBoth ? QBoxLayout::LeftToRight
                                                   : QBoxLayout::TopToBottom);
}

} // namespace ombrel
