#include "shell/tabs/EvaluationTab.h"

#include "evaluation/EvaluationTexts.h"
#include "evaluation/QuestionDrafting.h"
#include "evaluation/RetrievalEvaluation.h"
#include "evaluation/TestQuestionImporter.h"
#include "evaluation/TestQuestions.h"
#include "shell/ModelSetup.h"
#include "shell/QtText.h"
#include "shell/StudioServices.h"
#include "shell/design/Banner.h"
#include "shell/design/Button.h"
#include "shell/design/Card.h"
#include "shell/design/EmptyState.h"
#include "shell/design/FactList.h"
#include "shell/design/Named.h"
#include "shell/design/Prompt.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/SegmentedControl.h"
#include "shell/design/Spacing.h"
#include "shell/design/StatTile.h"
#include "shell/design/TextField.h"
#include "shell/design/WholeListView.h"
#include "shell/design/WrapLayout.h"
#include "shell/tabs/QuestionDelegate.h"
#include "shell/tabs/VariantTableModel.h"

#include <QCompleter>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QStringListModel>
#include <QTableView>
#include <QUrl>

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

constexpr int tileWidth = 170;
constexpr int mostListHeight = 460;
constexpr int mostVariantRows = 8;

QString progressText(const std::optional<Progress>& progress) {
    const Progress shown = progress.value_or(Progress{});
    return QStringLiteral("%1/%2").arg(shown.completed).arg(shown.total);
}

// Runs unless a run has begun since the button was pressed.
Task<void> evaluateWhenIdle(std::shared_ptr<AppState> state) {
    if (canEvaluate(*state)) {
        Task<void> running = runEvaluation(std::move(state));
        co_await running;
    }
}

} // namespace

EvaluationTab::EvaluationTab(std::shared_ptr<AppState> shownState, StudioServices& sharedServices,
                             QWidget* parent)
    : TabPage(AppTab::evaluation, Body::scrolls, std::move(shownState), sharedServices, parent),
      m_modelSetup(new ModelSetup(sharedServices, ModelSetup::Need::language)),
      m_reason(new Banner(Tone::warning)), m_variantRows(new VariantTableModel(this)),
      m_suggestions(new QStringListModel(this)), m_rows(new QuestionListModel(this)) {
    setAcceptDrops(true);
    addCommands();
    m_reason->setObjectName(QStringLiteral("evaluation.reason"));
    content()->addWidget(m_modelSetup);
    content()->addWidget(m_reason);
    content()->addWidget(makeTiles());
    content()->addWidget(makeVariants());
    content()->addWidget(makeAdding());
    content()->addWidget(makeQuestions());
    content()->addWidget(makeDetail());
    watchIndex();
}

void EvaluationTab::addCommands() {
    m_draft = named(makeButton(tr("Draft Questions")), QStringLiteral("evaluation.draft"),
                    tr("Draft Questions"));
    m_draft->setToolTip(
        tr("Has the model write a question for up to %1 sections that have none.").arg(draftLimit));
    m_run = named(makeButton(tr("Run Evaluation"), ButtonKind::primary),
                  QStringLiteral("evaluation.run"), tr("Run Evaluation"));
    m_running = new QWidget;
    m_running->setObjectName(QStringLiteral("evaluation.running"));
    m_progressText = new TextLabel({}, TextRole::strong);
    m_progressText->setObjectName(QStringLiteral("evaluation.progressText"));
    m_progressText->setAlignment(Qt::AlignRight);
    m_progress = named(new QProgressBar, QStringLiteral("evaluation.progress"),
                       tr("Running the evaluation"));
    m_progress->setTextVisible(false);
    m_progress->setFixedWidth(120);
    auto* column = new QVBoxLayout(m_running);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::tight);
    column->addWidget(m_progressText);
    column->addWidget(m_progress);
    header()->addControl(m_draft);
    header()->addControl(m_run);
    header()->addControl(m_running);
    connect(m_draft, &QPushButton::clicked, this,
            [this] { spawn(draftQuestions(sharedState(), draftLimit)); });
    connect(m_run, &QPushButton::clicked, this, [this] { spawn(evaluateWhenIdle(sharedState())); });
}

QWidget* EvaluationTab::makeTiles() {
    auto* tiles = new QWidget;
    auto* wrap = new WrapLayout(spacing::medium, tileWidth, tiles);
    for (const EvaluationCard& card : evaluationCards(state())) {
        auto* tile = new StatTile(toQt(card.title));
        tile->setObjectName(QStringLiteral("evaluation.tile.") + toQt(card.title));
        wrap->addWidget(tile);
        m_tiles.append(tile);
    }
    return tiles;
}

QWidget* EvaluationTab::makeVariants() {
    auto* card = new Card;
    m_variantTitle = new SectionTitle({});
    m_variantTitle->setObjectName(QStringLiteral("evaluation.variantTitle"));
    auto* duplicate = named(makeButton(tr("Duplicate as Variant")),
                            QStringLiteral("evaluation.duplicate"), tr("Duplicate as Variant"));
    duplicate->setToolTip(tr("Copies the settings in force, to change one thing and compare."));
    m_variantTitle->addControl(duplicate);
    m_variants = named(new QTableView, QStringLiteral("evaluation.variants"), tr("Variants"));
    m_variants->setModel(m_variantRows);
    m_variants->setShowGrid(false);
    m_variants->setWordWrap(false);
    m_variants->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_variants->setSelectionMode(QAbstractItemView::SingleSelection);
    m_variants->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_variants->setTabKeyNavigation(false);
    m_variants->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_variants->verticalHeader()->hide();
    m_variants->verticalHeader()->setDefaultSectionSize(36);
    m_variants->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_variants->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_variants->horizontalHeader()->setMinimumSectionSize(90);
    m_variants->horizontalHeader()->setHighlightSections(false);
    m_variants->horizontalHeader()->setSectionsClickable(false);
    m_variants->installEventFilter(this);
    card->content()->addWidget(m_variantTitle);
    card->content()->addWidget(m_variants);
    connect(duplicate, &QPushButton::clicked, this, [this] { state().duplicateVariant(); });
    connect(m_variants, &QTableView::doubleClicked, this,
            [this](const QModelIndex& index) { useVariant(index.row()); });
    return card;
}

QWidget* EvaluationTab::makeAdding() {
    auto* card = new Card;
    auto* title = new SectionTitle(
        tr("Add test questions"),
        tr("A question, and the section of your documents that should be found for it."));
    auto* import = named(makeButton(tr("Import test cases")), QStringLiteral("evaluation.import"),
                         tr("Import test cases"));
    import->setToolTip(toQt(importTestCasesHelp));
    import->setAccessibleDescription(toQt(importTestCasesHelp));
    title->addControl(import);
    m_question =
        named(new TextField(tr("Question")), QStringLiteral("evaluation.question"), tr("Question"));
    m_breadcrumb = named(new TextField(toQt(breadcrumbPlaceholder)),
                         QStringLiteral("evaluation.breadcrumb"), tr("Expected breadcrumb"));
    auto* completer = new QCompleter(m_suggestions, this);
    completer->setFilterMode(Qt::MatchContains);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setMaxVisibleItems(8);
    m_breadcrumb->setCompleter(completer);
    m_breadcrumb->installEventFilter(this);
    m_add = named(makeButton(tr("Add")), QStringLiteral("evaluation.add"), tr("Add"));
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing::small);
    row->addWidget(m_question, 1);
    row->addWidget(m_breadcrumb, 1);
    row->addWidget(m_add);
    m_importResult = (new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary))->wrapping();
    m_importResult->setObjectName(QStringLiteral("evaluation.importResult"));
    m_importResult->hide();
    card->content()->addWidget(title);
    card->content()->addLayout(row);
    card->content()->addWidget(m_importResult);
    connect(import, &QPushButton::clicked, this, &EvaluationTab::chooseFile);
    connect(m_add, &QPushButton::clicked, this, &EvaluationTab::addTyped);
    connect(m_question, &TextField::returnPressed, this, [this] {
        if (m_breadcrumb->text().isEmpty()) {
            m_breadcrumb->setFocus(Qt::TabFocusReason);
        } else {
            addTyped();
        }
    });
    connect(m_breadcrumb, &TextField::returnPressed, this, &EvaluationTab::addTyped);
    return card;
}

QWidget* EvaluationTab::makeQuestions() {
    auto* card = new Card;
    m_listTitle = new SectionTitle({});
    m_listTitle->setObjectName(QStringLiteral("evaluation.listTitle"));
    m_filter = named(new SegmentedControl, QStringLiteral("evaluation.filter"),
                     tr("Which questions are shown"));
    m_filter->add(QStringLiteral("all"), tr("All"));
    m_filter->add(QStringLiteral("failing"), tr("Failing"));
    m_filter->add(QStringLiteral("drafts"), tr("Drafts"));
    m_filter->setCurrentIndex(0);
    m_clear = named(makeButton(tr("Clear All"), ButtonKind::danger),
                    QStringLiteral("evaluation.clear"), tr("Clear All"));
    m_listTitle->addControl(m_filter);
    m_listTitle->addControl(m_clear);
    m_list = named(new WholeListView(mostListHeight), QStringLiteral("evaluation.list"),
                   tr("Test questions"));
    m_list->setItemDelegate(new QuestionDelegate(*m_rows, this));
    m_list->setUniformItemSizes(true);
    m_list->setModel(m_rows);
    m_list->installEventFilter(this);
    m_empty = new EmptyState(QStringLiteral("question"), toQt(noTestQuestionsYet));
    m_empty->setObjectName(QStringLiteral("evaluation.empty"));
    m_noMatch =
        new TextLabel(tr("None of the questions."), TextRole::body, TextLabel::Ink::secondary);
    m_noMatch->setObjectName(QStringLiteral("evaluation.noMatch"));
    card->content()->addWidget(m_listTitle);
    card->content()->addWidget(m_list);
    card->content()->addWidget(m_empty);
    card->content()->addWidget(m_noMatch);
    connect(m_filter, &SegmentedControl::chosen, this, [this](int index) {
        m_shownFilter = static_cast<QuestionListModel::Filter>(index);
        refreshQuestions();
    });
    connect(m_clear, &QPushButton::clicked, this, [this] { clearTestQuestions(state()); });
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &EvaluationTab::select);
    connect(m_list, &QListView::doubleClicked, this, &EvaluationTab::openShown);
    return card;
}

QWidget* EvaluationTab::makeDetail() {
    m_detail = new Card;
    m_detail->setObjectName(QStringLiteral("evaluation.detail"));
    m_detailQuestion = (new TextLabel({}, TextRole::heading))->wrapping()->selectable();
    m_detailQuestion->setObjectName(QStringLiteral("evaluation.detailQuestion"));
    m_detailFacts = new FactList;
    m_detailLine = (new TextLabel({}, TextRole::body, TextLabel::Ink::danger))->wrapping();
    m_detailLine->setObjectName(QStringLiteral("evaluation.detailLine"));
    auto* open = named(makeButton(tr("Open in Playground")), QStringLiteral("evaluation.open"),
                       tr("Open in Playground"));
    m_remove = named(makeButton(tr("Remove"), ButtonKind::danger),
                     QStringLiteral("evaluation.remove"), tr("Remove"));
    m_remove->setToolTip(tr("Remove (Delete)"));
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(spacing::small);
    buttons->addWidget(open);
    buttons->addWidget(m_remove);
    buttons->addStretch(1);
    m_detail->content()->addWidget(m_detailQuestion);
    m_detail->content()->addWidget(m_detailFacts);
    m_detail->content()->addWidget(m_detailLine);
    m_detail->content()->addSpacing(spacing::tight);
    m_detail->content()->addLayout(buttons);
    connect(open, &QPushButton::clicked, this, &EvaluationTab::openShown);
    connect(m_remove, &QPushButton::clicked, this, &EvaluationTab::removeShown);
    return m_detail;
}

void EvaluationTab::refresh() {
    m_modelSetup->setNeed(state().currentVariant().settings.index == IndexKind::keyword
                              ? ModelSetup::Need::language
                              : ModelSetup::Need::both);
    m_reason->showOrHide(toQt(evaluationBanner(state()).value_or("")));
    refreshCommands();
    const std::vector<EvaluationCard> cards = evaluationCards(state());
    for (std::size_t i = 0; i < cards.size(); ++i) {
        StatTile* tile = m_tiles[static_cast<qsizetype>(i)];
        if (cards[i].value == notEvaluatedYet) {
            tile->setWords(toQt(cards[i].value), toQt(cards[i].detail));
        } else {
            tile->setFigure(toQt(cards[i].value), toQt(cards[i].detail));
        }
    }
    refreshVariants();
    refreshQuestions();
    refreshDetail();
}

void EvaluationTab::refreshCommands() {
    const RAGIndex& index = state().currentIndex();
    m_run->setVisible(!index.isEvaluating);
    m_run->setEnabled(isRunEvaluationEnabled(state()));
    m_running->setVisible(index.isEvaluating);
    m_progressText->setText(progressText(index.evaluateProgress));
    const Progress progress = index.evaluateProgress.value_or(Progress{0, 1});
    m_progress->setRange(0, static_cast<int>(progress.total));
    m_progress->setValue(static_cast<int>(progress.completed));
    m_draft->setText(index.isDrafting ? progressText(index.draftProgress) : tr("Draft Questions"));
    m_draft->setEnabled(!index.isDrafting && chunkCount(state().indexedChunks()) > 0);
    // A run goes through the questions that there were at its start.
    m_clear->setEnabled(!index.isEvaluating && !index.testQuestions.empty());
    m_remove->setEnabled(!index.isEvaluating);
}

void EvaluationTab::refreshVariants() {
    const RAGIndex& index = state().currentIndex();
    m_variantTitle->setTitle(toQt(variantTableTitle(index)));
    m_variantRows->show(index);
    const int rows = std::min(m_variantRows->rowCount(), mostVariantRows);
    m_variants->setFixedHeight(m_variants->horizontalHeader()->sizeHint().height() +
                               rows * m_variants->verticalHeader()->defaultSectionSize() + 2);
}

void EvaluationTab::refreshQuestions() {
    const RAGIndex& index = state().currentIndex();
    m_listTitle->setTitle(toQt(questionListTitle(index)));
    {
        const QScopedValueRollback showing(m_isShowing, true); // what changes is no one's choice
        m_rows->show(index.testQuestions, m_shownFilter);
        const std::optional<FailingDetail> detail = failingDetail(state());
        const std::optional<int> row = detail ? m_rows->rowOf(detail->questionID) : std::nullopt;
        const QModelIndex shown = row ? m_rows->index(*row) : QModelIndex();
        if (m_list->currentIndex() != shown) {
            m_list->selectionModel()->setCurrentIndex(shown, QItemSelectionModel::ClearAndSelect);
        }
    }
    const bool isEmpty = index.testQuestions.empty();
    m_empty->setVisible(isEmpty);
    m_filter->setVisible(!isEmpty);
    m_clear->setVisible(!isEmpty);
    m_list->setVisible(m_rows->rowCount() > 0);
    m_noMatch->setVisible(!isEmpty && m_rows->rowCount() == 0);
}

void EvaluationTab::refreshDetail() {
    const std::optional<FailingDetail> detail = failingDetail(state());
    m_detail->setVisible(detail.has_value());
    if (detail) {
        m_detailQuestion->setText(toQt(detail->question));
        m_detailFacts->setFact(QStringLiteral("expected"), tr("Expected"), toQt(detail->expected));
        m_detailFacts->setFact(QStringLiteral("got"), tr("Got"), toQt(detail->got));
        m_detailLine->setText(toQt(detail->line));
        m_detailLine->setVisible(!detail->line.empty());
    }
}

bool EvaluationTab::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_breadcrumb && event->type() == QEvent::FocusIn) {
        suggestBreadcrumbs();
    }
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const bool isEnter = key == Qt::Key_Return || key == Qt::Key_Enter;
        if (watched == m_list && isEnter) {
            openShown();
            return true;
        }
        if (watched == m_list && (key == Qt::Key_Delete || key == Qt::Key_Backspace)) {
            removeShown();
            return true;
        }
        if (watched == m_variants && isEnter) {
            useVariant(m_variants->currentIndex().row());
            return true;
        }
    }
    return TabPage::eventFilter(watched, event);
}

void EvaluationTab::suggestBreadcrumbs() {
    QStringList suggestions;
    for (const std::string& breadcrumb : typableBreadcrumbs(state())) {
        suggestions.append(toQt(breadcrumb));
    }
    if (suggestions != m_suggestions->stringList()) {
        m_suggestions->setStringList(suggestions);
    }
}

void EvaluationTab::useVariant(int row) {
    if (row < 0 || row >= m_variantRows->rowCount()) {
        return;
    }
    const Uuid id = m_variantRows->variantID(row);
    if (state().currentIndex().selectedVariantID != id) {
        state().editCurrentIndex()->selectedVariantID = id;
        state().scheduleCheckpoint();
    }
}

void EvaluationTab::addTyped() {
    if (addTypedQuestion(state(), fromQt(m_question->text()), fromQt(m_breadcrumb->text()))) {
        m_question->clear();
        m_breadcrumb->clear();
        m_question->setFocus(Qt::OtherFocusReason);
    }
}

void EvaluationTab::chooseFile() {
    auto* panel =
        new QFileDialog(this, tr("Import test cases"), services().settings().lastFolder());
    panel->setObjectName(QStringLiteral("evaluation.importPanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::ExistingFile);
    panel->setNameFilters({tr("Test cases (*.csv *.txt)"), tr("All files (*)")});
    connect(panel, &QFileDialog::fileSelected, this, [this](const QString& file) {
        services().settings().setLastFolder(QFileInfo(file).absolutePath());
        importFile(pathFromQt(file));
    });
    panel->open();
}

void EvaluationTab::importFile(const std::filesystem::path& file) {
    const std::optional<ImportCounts> counts = importTestCases(state(), file);
    if (counts) {
        m_importResult->setText(toQt(importResultText(*counts).value_or("")));
        m_importResult->setVisible(!m_importResult->text().isEmpty());
        return;
    }
    alert(window(), toQt(importProblemTitle), toQt(state().currentIndex().importError.value_or("")),
          [held = sharedState(), id = state().currentIndex().id] {
              held->editIndex(id, [](RAGIndex& index) { index.importError.reset(); });
          });
}

void EvaluationTab::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls() && event->mimeData()->urls().first().isLocalFile()) {
        event->acceptProposedAction();
    }
}

void EvaluationTab::dropEvent(QDropEvent* event) {
    for (const QUrl& url : event->mimeData()->urls()) {
        if (url.isLocalFile()) {
            importFile(pathFromQt(url.toLocalFile()));
        }
    }
    event->acceptProposedAction();
}

void EvaluationTab::select(const QModelIndex& current) {
    if (current.isValid() && !m_isShowing) {
        state().editCurrentIndex()->selectedFailingQuestionID = m_rows->question(current.row()).id;
        refreshDetail();
    }
}

void EvaluationTab::removeShown() {
    const std::optional<FailingDetail> detail = failingDetail(state());
    if (detail && !state().currentIndex().isEvaluating) {
        removeTestQuestion(state(), detail->questionID);
    }
}

void EvaluationTab::openShown() {
    if (const std::optional<FailingDetail> detail = failingDetail(state())) {
        openInPlayground(state(), detail->questionID);
    }
}

} // namespace ombrel
