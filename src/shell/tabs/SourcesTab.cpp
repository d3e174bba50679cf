#include "shell/tabs/SourcesTab.h"

#include "core/FindByID.h"
#include "knowledge/Ingestion.h"
#include "knowledge/SourceTexts.h"
#include "shell/ModelSetup.h"
#include "shell/QtText.h"
#include "shell/StudioServices.h"
#include "shell/design/Banner.h"
#include "shell/design/Button.h"
#include "shell/design/Card.h"
#include "shell/design/DropHint.h"
#include "shell/design/EmptyState.h"
#include "shell/design/Icon.h"
#include "shell/design/Named.h"
#include "shell/design/ProgressRow.h"
#include "shell/design/Prompt.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/design/WrapLayout.h"
#include "shell/tabs/BuildProgress.h"
#include "shell/tabs/PasteSheet.h"
#include "shell/tabs/SourceDetail.h"
#include "shell/tabs/SourceImport.h"
#include "shell/tabs/SourceList.h"
#include "shell/tabs/SourcesModel.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSortFilterProxyModel>
#include <QStackedWidget>
#include <QUrl>

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

bool isPasted(const SourceDocument& source) {
    return !source.fileURL && source.pastedText;
}

bool usesVectors(const BuildSettings& settings) {
    return settings.index == IndexKind::vector || settings.index == IndexKind::hybrid;
}

} // namespace

SourcesTab::SourcesTab(std::shared_ptr<AppState> shownState, StudioServices& sharedServices,
                       QWidget* parent)
    : TabPage(AppTab::sources, Body::fills, std::move(shownState), sharedServices, parent),
      m_import(new SourceImport(sharedState(), this)), m_model(new SourcesModel(this)),
      m_shown(new QSortFilterProxyModel(this)),
      m_setup(new ModelSetup(services(), ModelSetup::Need::language)),
      m_notice(new Banner(Tone::neutral)), m_search(new ProgressRow), m_progress(new BuildProgress),
      m_body(new QStackedWidget) {
    m_empty = makeEmptyState();
    m_filled = makeFilled();
    header()->addControl(
        makeAddButton("sources.paste", tr("Paste Text\u2026"), &SourcesTab::pasteText));
    header()->addControl(
        makeAddButton("sources.addFolder", tr("Add Folder\u2026"), &SourcesTab::chooseFolder));
    auto* addFiles =
        makeAddButton("sources.addFiles", tr("Add Files\u2026"), &SourcesTab::chooseFiles);
    addFiles->setProperty("kind", "primary");
    header()->addControl(addFiles);

    m_notice->setObjectName(QStringLiteral("sources.notice"));
    auto* dismiss = named(makeButton(tr("Dismiss"), ButtonKind::plain),
                          QStringLiteral("sources.notice.dismiss"), tr("Dismiss"));
    m_notice->addAction(dismiss);
    m_notice->hide();
    m_search->setObjectName(QStringLiteral("sources.search"));
    auto* stop = named(makeButton(tr("Stop")), QStringLiteral("sources.search.stop"), tr("Stop"));
    m_search->addAction(stop);
    m_search->hide();
    m_body->addWidget(m_empty);
    m_body->addWidget(m_filled);
    content()->addWidget(m_setup);
    content()->addWidget(m_notice);
    content()->addWidget(m_search);
    content()->addWidget(m_progress);
    content()->addWidget(m_body, 1);

    connect(dismiss, &QPushButton::clicked, m_notice, &QWidget::hide);
    connect(stop, &QPushButton::clicked, m_import, &SourceImport::stopSearch);
    connect(m_import, &SourceImport::changed, this, &SourcesTab::showImport);
    connect(
        m_import, &SourceImport::foundNothing, this,
        [this](const std::vector<std::filesystem::path>& urls) {
            const QString where = toQt(urls.front().filename());
            m_notice->showOrHide(
                urls.size() == 1
                    ? tr("There is no Markdown, text or PDF document in \u201c%1\u201d.").arg(where)
                    : tr("There is no Markdown, text or PDF document in what you added."));
        });
    watchIndex();
}

QPushButton* SourcesTab::makeAddButton(const char* name, const QString& text,
                                       void (SourcesTab::*run)()) {
    auto* button = named(makeButton(text), QLatin1String(name), text);
    connect(button, &QPushButton::clicked, this, run);
    return button;
}

QWidget* SourcesTab::makeEmptyState() {
    auto* empty = new EmptyState(
        QStringLiteral("sources"), tr("Start with your documents"),
        tr("They are cut into chunks and indexed on this machine, so that questions can be "
           "answered from them. You can add more, or take some away, at any time."));
    empty->setObjectName(QStringLiteral("sources.empty"));
    auto* hint = named(new DropHint(toQt(dropAreaText)), QStringLiteral("sources.empty.drop"),
                       toQt(dropAreaText));
    hint->setMinimumHeight(72);
    hint->setMinimumWidth(360);
    connect(hint, &QAbstractButton::clicked, this, &SourcesTab::chooseFiles);
    empty->addControl(hint);
    auto* buttons = new QWidget;
    auto* row = new QHBoxLayout(buttons);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(spacing::small);
    row->addWidget(
        makeAddButton("sources.empty.addFiles", tr("Add Files\u2026"), &SourcesTab::chooseFiles));
    row->addWidget(makeAddButton("sources.empty.addFolder", tr("Add Folder\u2026"),
                                 &SourcesTab::chooseFolder));
    row->addWidget(
        makeAddButton("sources.empty.paste", tr("Paste Text\u2026"), &SourcesTab::pasteText));
    empty->addControl(buttons);
    return empty;
}

QWidget* SourcesTab::makeFilled() {
    m_filter = named(new QLineEdit, QStringLiteral("sources.filter"), tr("Filter documents"));
    m_filter->setPlaceholderText(tr("Filter documents"));
    m_filter->setClearButtonEnabled(true);
    m_filter->setAcceptDrops(false);
    m_filter->setMaximumWidth(280);
    m_filter->addAction(themeIcon(QStringLiteral("search")), QLineEdit::LeadingPosition);
    m_summary = new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary);
    m_summary->setObjectName(QStringLiteral("sources.summary"));
    auto* rescanButton = makeAddButton("sources.rescan", tr("Re-scan"), &SourcesTab::rescan);
    rescanButton->setIcon(themeIcon(QStringLiteral("refresh")));
    rescanButton->setToolTip(tr("Read every source again, with the current settings"));
    auto* bar = new QHBoxLayout;
    bar->setSpacing(spacing::medium);
    bar->addWidget(m_filter, 1);
    bar->addStretch(0);
    bar->addWidget(m_summary);
    bar->addStretch(1);
    bar->addWidget(rescanButton);

    m_list = new SourceList;
    m_shown->setSourceModel(m_model);
    m_shown->setSortRole(SourcesModel::sortRole);
    m_shown->setSortCaseSensitivity(Qt::CaseInsensitive);
    m_shown->setSortLocaleAware(true);
    m_shown->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_shown->setFilterKeyColumn(SourcesModel::document);
    m_list->setModel(m_shown);
    m_noMatch = new TextLabel(tr("No document has a name like that."), TextRole::body,
                              TextLabel::Ink::secondary);
    m_noMatch->setObjectName(QStringLiteral("sources.noMatch"));
    m_noMatch->setAlignment(Qt::AlignCenter);
    auto* table = new Card;
    table->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    table->content()->setContentsMargins(spacing::small, spacing::tight, spacing::tight,
                                         spacing::small);
    table->content()->addWidget(m_list, 1);
    table->content()->addWidget(m_noMatch, 1);
    m_drop =
        named(new DropHint(toQt(dropAreaText)), QStringLiteral("sources.drop"), toQt(dropAreaText));
    connect(m_drop, &QAbstractButton::clicked, this, &SourcesTab::chooseFiles);
    m_detail = new SourceDetail;

    auto* filled = new QWidget;
    auto* column = new QVBoxLayout(filled);
    column->setContentsMargins(0, 0, 0, spacing::large);
    column->setSpacing(spacing::medium);
    column->addLayout(bar);
    column->addWidget(table, 1);
    column->addWidget(m_drop);
    column->addWidget(m_detail);

    connect(m_filter, &QLineEdit::textChanged, this, [this](const QString& text) {
        {
            // A filter that hides what is selected selects nothing else.
            const QScopedValueRollback showing(m_isShowingSelection, true);
            m_shown->setFilterFixedString(text);
        }
        refreshLater();
    });
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &SourcesTab::currentChanged);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { refreshLater(); });
    connect(m_list, &QAbstractItemView::activated, this, &SourcesTab::openSelected);
    connect(m_list, &QWidget::customContextMenuRequested, this, &SourcesTab::openMenu);
    connect(m_list, &SourceList::removeWanted, this, &SourcesTab::removeSelected);
    connect(m_list, &SourceList::filesPasted, this, &SourcesTab::add);
    connect(m_list, &SourceList::textPasted, this,
            [this](const QString& text) { openPasteSheet(std::nullopt, {}, text); });
    connect(m_detail, &SourceDetail::openWanted, this, &SourcesTab::openSelected);
    connect(m_detail, &SourceDetail::folderWanted, this, &SourcesTab::showFolder);
    connect(m_detail, &SourceDetail::chunksWanted, this,
            [this] { state().setSelectedTab(AppTab::index); });
    connect(m_detail, &SourceDetail::removeWanted, this, &SourcesTab::removeSelected);
    return filled;
}

void SourcesTab::add(const QStringList& paths) {
    if (paths.isEmpty()) {
        return;
    }
    m_notice->hide();
    std::vector<std::filesystem::path> urls;
    for (const QString& path : paths) {
        urls.push_back(pathFromQt(path));
    }
    m_import->add(std::move(urls));
}

void SourcesTab::chooseFiles() {
    auto* panel = new QFileDialog(this, tr("Add Files"), services().settings().lastFolder(),
                                  tr("Documents (*.md *.markdown *.txt *.pdf *.MD *.MARKDOWN "
                                     "*.TXT *.PDF);;All files (*)"));
    panel->setObjectName(QStringLiteral("sources.filePanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::ExistingFiles);
    connect(panel, &QFileDialog::filesSelected, this, [this](const QStringList& chosen) {
        if (!chosen.isEmpty()) {
            services().settings().setLastFolder(QFileInfo(chosen.first()).absolutePath());
            add(chosen);
        }
    });
    panel->open();
}

void SourcesTab::chooseFolder() {
    auto* panel = new QFileDialog(this, tr("Add Folder"), services().settings().lastFolder());
    panel->setObjectName(QStringLiteral("sources.folderPanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::Directory);
    connect(panel, &QFileDialog::fileSelected, this, [this](const QString& chosen) {
        services().settings().setLastFolder(chosen);
        add({chosen});
    });
    panel->open();
}

void SourcesTab::pasteText() {
    openPasteSheet(std::nullopt, {}, {});
}

void SourcesTab::openPasteSheet(std::optional<Uuid> existingID, const QString& title,
                                const QString& text) {
    auto* sheet = new PasteSheet(existingID ? PasteSheet::Purpose::edit : PasteSheet::Purpose::add,
                                 title, text, window());
    connect(sheet, &PasteSheet::submitted, this,
            [this, existingID](const QString& newTitle, const QString& newText) {
                spawn(addPastedText(sharedState(), existingID, fromQt(newTitle), fromQt(newText),
                                    false));
            });
    sheet->open();
}

void SourcesTab::rescan() {
    spawn(rescanAll(sharedState()));
}

void SourcesTab::refresh() {
    const RAGIndex& index = state().currentIndex();
    {
        const QScopedValueRollback showing(m_isShowingSelection, true);
        m_model->show(index);
    }
    m_setup->setNeed(usesVectors(index.currentSettings()) ? ModelSetup::Need::both
                                                          : ModelSetup::Need::language);
    m_progress->show(state());
    showImport();
    const auto count = static_cast<std::int64_t>(index.sources.size());
    m_body->setCurrentWidget(count == 0 ? m_empty : m_filled);
    const auto notReady = std::ranges::count_if(index.sources, [](const SourceDocument& source) {
        return toneOf(source.status) != Tone::success;
    });
    QString summary = count == 1 ? tr("1 document") : tr("%1 documents").arg(numberText(count));
    if (m_shown->rowCount() < count) {
        summary = tr("%1 of %2").arg(numberText(m_shown->rowCount()), summary);
    }
    if (notReady > 0) {
        summary += QStringLiteral(" \u00b7 ") +
                   (notReady == 1 ? tr("1 to look at") : tr("%1 to look at").arg(notReady));
    }
    m_summary->setText(summary);
    const bool hidesAll = count > 0 && m_shown->rowCount() == 0;
    m_list->setVisible(!hidesAll);
    m_noMatch->setVisible(hidesAll);
    showSelection();
    showProblem();
}

void SourcesTab::resizeEvent(QResizeEvent* event) {
    TabPage::resizeEvent(event);
    // In a low window the documents need the room; files can be dropped anywhere all the same.
    constexpr int roomForHint = 640;
    m_drop->setVisible(height() >= roomForHint);
}

void SourcesTab::showImport() {
    const bool waits = m_import->waitingCount() > 0;
    if (m_import->isSearching()) {
        m_search->setProgress(
            tr("Looking for documents in \u201c%1\u201d \u2014 %2 found")
                .arg(toQt(m_import->searchedPlace().filename()),
                     numberText(static_cast<std::int64_t>(m_import->foundCount()))),
            0, 0);
    } else if (waits) {
        m_search->setProgress(
            tr("%1 more wait until the files before them are read")
                .arg(numberText(static_cast<std::int64_t>(m_import->waitingCount()))),
            0, 1);
    }
    m_search->setVisible(m_import->isSearching() || waits);
}

void SourcesTab::showProblem() {
    const RAGIndex& index = state().currentIndex();
    if (!index.importError || m_isTellingProblem) {
        return;
    }
    m_isTellingProblem = true;
    alert(window(), toQt(importProblemTitle), toQt(*index.importError),
          [guarded = QPointer(this), id = index.id] {
              if (guarded) {
                  guarded->m_isTellingProblem = false;
                  guarded->state().editIndex(id, [](RAGIndex& told) { told.importError.reset(); });
              }
          });
}

void SourcesTab::showSelection() {
    const SourceDocument* source = selectedSource();
    const QScopedValueRollback showing(m_isShowingSelection, true);
    const int row = source ? m_model->rowOf(source->id) : -1;
    const QModelIndex wanted =
        row < 0 ? QModelIndex() : m_shown->mapFromSource(m_model->index(row, 0));
    if (!wanted.isValid()) {
        m_list->selectionModel()->clear();
    } else if (m_list->currentIndex().row() != wanted.row() ||
               !m_list->selectionModel()->hasSelection()) {
        m_list->setCurrentIndex(wanted);
    }
    m_detail->setVisible(source != nullptr);
    if (source) {
        m_detail->show(state().currentIndex(), *source,
                       static_cast<int>(m_list->selectionModel()->selectedRows().size()),
                       *state().platform().languages);
    }
}

void SourcesTab::currentChanged() {
    const QModelIndex current = m_list->currentIndex();
    if (m_isShowingSelection || !current.isValid()) {
        return;
    }
    const Uuid id = m_model->row(m_shown->mapToSource(current).row()).id;
    if (state().currentIndex().selectedSourceID != id) {
        state().editCurrentIndex()->selectedSourceID = id;
    }
}

std::vector<Uuid> SourcesTab::selectedSources() const {
    std::vector<Uuid> ids;
    const auto rows = m_list->selectionModel()->selectedRows();
    for (const QModelIndex& row : rows) {
        ids.push_back(m_model->row(m_shown->mapToSource(row).row()).id);
    }
    // The filter may hide the one that the detail shows.
    if (const SourceDocument* source = selectedSource(); ids.empty() && source) {
        ids.push_back(source->id);
    }
    return ids;
}

const SourceDocument* SourcesTab::selectedSource() const {
    const RAGIndex& index = state().currentIndex();
    return index.selectedSourceID ? findByID(index.sources, *index.selectedSourceID) : nullptr;
}

void SourcesTab::openSelected() {
    const SourceDocument* source = selectedSource();
    if (!source) {
        return;
    }
    if (isPasted(*source)) {
        openPasteSheet(source->id, toQt(source->name), toQt(source->pastedText->text()));
    } else if (source->fileURL) {
        openPath(*source->fileURL);
    }
}

void SourcesTab::showFolder() {
    const SourceDocument* source = selectedSource();
    if (source && source->fileURL) {
        openPath(source->fileURL->parent_path());
    }
}

void SourcesTab::openPath(const std::filesystem::path& path) {
    const QString shown = toQt(path);
    if (!QFileInfo::exists(shown)) {
        alert(window(), tr("It isn\u2019t there any more"),
              tr("%1 was moved or deleted. The chunks that were read from it stay in force.")
                  .arg(shown));
    } else if (!QDesktopServices::openUrl(QUrl::fromLocalFile(shown))) {
        alert(window(), tr("It couldn\u2019t be opened"),
              tr("This desktop has no program that opens %1.").arg(shown));
    }
}

void SourcesTab::removeSelected() {
    for (const Uuid& id : selectedSources()) {
        removeSource(state(), id);
    }
}

void SourcesTab::openMenu(const QPoint& where) {
    const QModelIndex row = m_list->indexAt(where);
    const SourceDocument* source = selectedSource();
    if (!row.isValid() || !source) {
        return;
    }
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setObjectName(QStringLiteral("sources.menu"));
    const auto add = [menu](const char* name, const char* icon, const QString& text) {
        QAction* action = menu->addAction(themeIcon(QLatin1String(icon)), text);
        action->setObjectName(QLatin1String(name));
        return action;
    };
    const auto count = static_cast<int>(selectedSources().size());
    if (count == 1 && (source->fileURL || isPasted(*source))) {
        connect(add("sources.menu.open", "document",
                    isPasted(*source) ? tr("View Text") : tr("Open File")),
                &QAction::triggered, this, &SourcesTab::openSelected);
    }
    if (count == 1 && source->fileURL) {
        connect(add("sources.menu.folder", "folder", tr("Show in Folder")), &QAction::triggered,
                this, &SourcesTab::showFolder);
        connect(add("sources.menu.copyPath", "copy", tr("Copy Path")), &QAction::triggered, this,
                [path = toQt(*source->fileURL)] { QGuiApplication::clipboard()->setText(path); });
    }
    if (count == 1) {
        connect(add("sources.menu.chunks", "index", tr("Show Chunks")), &QAction::triggered, this,
                [this] { state().setSelectedTab(AppTab::index); });
        menu->addSeparator();
    }
    QAction* remove =
        add("sources.menu.remove", "trash",
            count > 1 ? tr("Remove %1 Documents").arg(numberText(count)) : tr("Remove"));
    remove->setShortcut(QKeySequence::Delete);
    connect(remove, &QAction::triggered, this, &SourcesTab::removeSelected);
    menu->popup(m_list->viewport()->mapToGlobal(where));
}

} // namespace ombrel
