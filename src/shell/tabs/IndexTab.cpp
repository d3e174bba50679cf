#include "shell/tabs/IndexTab.h"

#include "knowledge/BuildTexts.h"
#include "knowledge/IndexReport.h"
#include "platform/Text.h"
#include "shell/QtText.h"
#include "shell/Worker.h"
#include "shell/design/Banner.h"
#include "shell/design/Button.h"
#include "shell/design/EmptyState.h"
#include "shell/design/Named.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/StatTile.h"
#include "shell/design/TextField.h"
#include "shell/design/WrapLayout.h"
#include "shell/tabs/ChunkDialog.h"
#include "shell/tabs/ChunkListModel.h"
#include "shell/tabs/ChunkListView.h"

#include <QKeyEvent>
#include <QShortcut>
#include <QToolButton>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <string>
#include <utility>

namespace ombrel {

// What a search on another thread needs.
struct IndexTab::Search {
    Search(std::vector<ChunkListModel::Section> searched, std::string words, bool goesToMatch)
        : sections(std::move(searched)), loweredWords(std::move(words)), goes(goesToMatch) {}

    std::vector<ChunkListModel::Section> sections;
    std::string loweredWords;
    bool goes = false;
    mutable std::atomic<bool> isSuperseded = false;

    std::vector<int> matches() const {
        std::vector<int> rows;
        for (const ChunkListModel::Section& section : sections) {
            int row = section.firstRow;
            for (const DocumentChunk& chunk : section.chunks) {
                row += 1;
                if (isSuperseded) {
                    return {};
                }
                if (ChunkCard{chunk, IndexKind::keyword}.mentions(loweredWords)) {
                    rows.push_back(row);
                }
            }
        }
        return rows;
    }
};

IndexTab::IndexTab(std::shared_ptr<AppState> shownState, StudioServices& sharedServices,
                   QWidget* parentWidget)
    : TabPage(AppTab::index, Body::fills, std::move(shownState), sharedServices, parentWidget),
      m_empty(new EmptyState(QStringLiteral("index"), toQt(noSourcesNote))), m_report(new QWidget) {
    m_empty->setObjectName(QStringLiteral("index.empty"));
    m_report->setObjectName(QStringLiteral("index.report"));
    content()->addWidget(m_empty, 1);
    content()->addWidget(m_report, 1);
    auto* column = new QVBoxLayout(m_report);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::large);
    addReport(column);
    addChunks(column);
    watchIndex();
    watch(state().project);
}

void IndexTab::addReport(QVBoxLayout* column) {
    m_stale = new Banner(Tone::warning);
    m_stale->setObjectName(QStringLiteral("index.stale"));
    column->addWidget(m_stale);

    auto* tiles = new QWidget;
    auto* row = new WrapLayout(spacing::medium, 150);
    tiles->setLayout(row);
    const char* const names[] = {"index.chunks", "index.kind", "index.embedded", "index.groups"};
    const auto figures = indexTiles(state());
    for (std::size_t i = 0; i < figures.size(); ++i) {
        auto* tile = new StatTile(toQt(figures[i].title));
        tile->setObjectName(QString::fromUtf8(names[i]));
        row->addWidget(tile);
        m_tiles.push_back(tile);
    }
    column->addWidget(tiles);
}

void IndexTab::addChunks(QVBoxLayout* column) {
    auto* title = new SectionTitle(tr("Chunks of every source"));
    m_position = new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary);
    m_position->setObjectName(QStringLiteral("index.find.position"));
    m_words = named(new TextField(tr("Find in chunks")), QStringLiteral("index.find"),
                    tr("Find in chunks"));
    m_words->setClearButtonEnabled(true);
    m_words->setFixedWidth(220);
    m_words->installEventFilter(this);
    m_previous = named(makeIconButton(QStringLiteral("arrow-up"), tr("Previous match (Shift+F3)")),
                       QStringLiteral("index.find.previous"), tr("Previous match"));
    m_next = named(makeIconButton(QStringLiteral("arrow-down"), tr("Next match (F3)")),
                   QStringLiteral("index.find.next"), tr("Next match"));
    for (QWidget* control : {static_cast<QWidget*>(m_position), static_cast<QWidget*>(m_words),
                             static_cast<QWidget*>(m_previous), static_cast<QWidget*>(m_next)}) {
        title->addControl(control);
    }
    column->addWidget(title);

    m_model = new ChunkListModel(this);
    m_list = named(new ChunkListView, QStringLiteral("index.list"), tr("Chunks of every source"));
    m_list->setModel(m_model);
    column->addWidget(m_list, 1);
    const auto changed = [this] { m_chunksChanged = true; };
    connect(m_model, &QAbstractItemModel::rowsInserted, this, changed);
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, changed);
    connect(m_model, &QAbstractItemModel::dataChanged, this, changed);
    connect(m_list, &ChunkListView::opened, this, &IndexTab::openChunk);

    // Also for the button in the field that clears it.
    connect(m_words, &QLineEdit::textChanged, this, [this] { look(true); });
    connect(m_previous, &QToolButton::clicked, this, [this] { goToMatch(-1); });
    connect(m_next, &QToolButton::clicked, this, [this] { goToMatch(1); });
    const auto shortcut = [this](const QKeySequence& key, auto action) {
        auto* made = new QShortcut(key, this);
        made->setContext(Qt::WindowShortcut);
        connect(made, &QShortcut::activated, this, action);
    };
    shortcut(QKeySequence::Find, [this] {
        m_words->setFocus(Qt::ShortcutFocusReason);
        m_words->selectAll();
    });
    shortcut(QKeySequence::FindNext, [this] { goToMatch(1); });
    shortcut(QKeySequence::FindPrevious, [this] { goToMatch(-1); });
    showPosition();
}

void IndexTab::refresh() {
    const RAGIndex& index = state().currentIndex();
    const bool isEmpty = index.sources.empty();
    m_empty->setVisible(isEmpty);
    m_report->setVisible(!isEmpty);
    m_stale->showOrHide(settingsChangedSinceBuild(state()) ? toQt(staleIndexNote) : QString());
    const auto figures = indexTiles(state());
    for (std::size_t i = 0; i < figures.size(); ++i) {
        m_tiles[i]->setFigure(toQt(figures[i].value), toQt(figures[i].subtitle));
    }
    m_model->show(index, state().currentVariant().settings.index);
    if (std::exchange(m_chunksChanged, false) && !m_words->text().isEmpty()) {
        look(false);
    }
}

// Finding.

bool IndexTab::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_words && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        switch (key->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
            goToMatch(key->modifiers().testFlag(Qt::ShiftModifier) ? -1 : 1);
            return true;
        case Qt::Key_Escape:
            m_words->clear();
            m_list->setFocus();
            return true;
        case Qt::Key_Down:
            m_list->setFocus();
            return true;
        default:
            break;
        }
    }
    return TabPage::eventFilter(watched, event);
}

void IndexTab::look(bool goes) {
    if (m_search) {
        m_search->isSuperseded = true;
    }
    const QString words = m_words->text();
    m_list->setMarkedWords(words);
    if (words.isEmpty()) {
        showMatches({}, false);
        return;
    }
    m_search = std::make_shared<const Search>(m_model->sections(), lowercased(fromQt(words)), goes);
    spawn(lookFor(this, state().platform().executor, m_search));
}

Task<void> IndexTab::lookFor(QPointer<IndexTab> tab, std::shared_ptr<MainExecutor> executor,
                             std::shared_ptr<const Search> search) {
    std::function<std::vector<int>()> work = [search] { return search->matches(); };
    Task<std::vector<int>> task = onWorker<std::vector<int>>(executor, work);
    std::vector<int> rows = co_await std::move(task);
    if (tab && !search->isSuperseded) {
        tab->showMatches(std::move(rows), search->goes);
    }
}

void IndexTab::showMatches(std::vector<int> rows, bool goes) {
    m_matches = std::move(rows);
    const int current = std::max(0, m_list->currentIndex().row());
    const auto next = std::ranges::lower_bound(m_matches, current);
    m_match = m_matches.empty()         ? -1
              : next == m_matches.end() ? 0
                                        : static_cast<int>(next - m_matches.begin());
    if (goes && m_match >= 0) {
        m_list->goTo(m_matches[static_cast<std::size_t>(m_match)]);
    }
    showPosition();
}

void IndexTab::goToMatch(int step) {
    const auto count = static_cast<int>(std::ssize(m_matches));
    if (count > 0) {
        m_match = (m_match + step + count) % count;
        m_list->goTo(m_matches[static_cast<std::size_t>(m_match)]);
        showPosition();
    }
}

void IndexTab::showPosition() {
    const bool hasMatches = !m_matches.empty();
    m_previous->setEnabled(hasMatches);
    m_next->setEnabled(hasMatches);
    m_position->setText(
        m_words->text().isEmpty() ? QString()
        : hasMatches
            ? tr("%1 of %2").arg(numberText(m_match + 1), numberText(std::ssize(m_matches)))
            : tr("No matches"));
}

void IndexTab::openChunk(int row) {
    auto* dialog = new ChunkDialog(m_model->cardOf(row), m_model->sectionOf(row).name, window());
    dialog->open();
}

} // namespace ombrel
