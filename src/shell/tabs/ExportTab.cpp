#include "shell/tabs/ExportTab.h"

#include "export/ArrayLiteralWarning.h"
#include "export/PackageName.h"
#include "shell/QtText.h"
#include "shell/StudioServices.h"
#include "shell/Worker.h"
#include "shell/design/Badge.h"
#include "shell/design/Banner.h"
#include "shell/design/Button.h"
#include "shell/design/Card.h"
#include "shell/design/ChoiceTile.h"
#include "shell/design/ChoiceTileGroup.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/IconView.h"
#include "shell/design/Named.h"
#include "shell/design/Prompt.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/SwiftCodeView.h"
#include "shell/design/WrapLayout.h"
#include "shell/tabs/ChecklistRowView.h"

#include <QDesktopServices>
#include <QFileDialog>
#include <QGridLayout>
#include <QProgressBar>
#include <QUrl>

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

constexpr int columnWidth = 420; // below twice that, what is beside each other comes below

const void* identityOf(const IndexedDocument& entry) {
    return entry.chunks.identity();
}

} // namespace

ExportTab::ExportTab(std::shared_ptr<AppState> shownState, StudioServices& sharedServices,
                     QWidget* parentWidget)
    : TabPage(AppTab::exportPackage, Body::scrolls, std::move(shownState), sharedServices,
              parentWidget) {
    content()->addWidget(makeSummary());
    auto* left = new QWidget;
    auto* leftColumn = new QVBoxLayout(left);
    leftColumn->setContentsMargins(0, 0, 0, 0);
    leftColumn->setSpacing(spacing::large);
    leftColumn->addWidget(makeChecklist());
    leftColumn->addWidget(makeExport());
    leftColumn->addStretch(1);
    auto* right = new QWidget;
    auto* rightColumn = new QVBoxLayout(right);
    rightColumn->setContentsMargins(0, 0, 0, 0);
    rightColumn->addWidget(makePreview());
    rightColumn->addStretch(1);
    auto* columns = new QWidget;
    auto* wrap = new WrapLayout(spacing::large, columnWidth);
    columns->setLayout(wrap);
    wrap->addWidget(left);
    wrap->addWidget(right);
    content()->addWidget(columns);
    watchIndex();
    watch(state().project);
}

Card* ExportTab::makeSummary() {
    auto* card = new Card;
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing::medium);
    row->addWidget(new IconView(QStringLiteral("package"), Tone::accent, 24));
    m_name = new ElidedLabel({}, TextRole::heading);
    m_name->setObjectName(QStringLiteral("export.name"));
    m_name->setElideMode(Qt::ElideMiddle);
    row->addWidget(m_name, 1);
    m_chunks = new Badge;
    m_chunks->setObjectName(QStringLiteral("export.chunks"));
    row->addWidget(m_chunks);
    row->addWidget(new Badge(toQt(exportSummaryKind), Tone::accent));
    card->content()->addLayout(row);
    return card;
}

Card* ExportTab::makeChecklist() {
    auto* card = new Card;
    card->content()->setSpacing(spacing::tight);
    card->content()->addWidget(new SectionTitle(toQt(checklistTitle)));
    const char* const names[] = {"export.check.sources", "export.check.evaluation",
                                 "export.check.warnings", "export.check.index"};
    for (const char* const name : names) {
        auto* row = new ChecklistRowView;
        row->setObjectName(QString::fromUtf8(name));
        card->content()->addWidget(row);
        m_rows.push_back(row);
    }
    return card;
}

Card* ExportTab::makeExport() {
    auto* card = new Card;
    QVBoxLayout* const column = card->content();
    column->addWidget(
        new TextLabel(toQt(destinationTitle), TextRole::overline, TextLabel::Ink::secondary));
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing::small);
    row->addWidget(new IconView(QStringLiteral("folder"), Tone::neutral, spacing::icon));
    m_destination = new ElidedLabel;
    m_destination->setObjectName(QStringLiteral("export.destination"));
    m_destination->setElideMode(Qt::ElideMiddle);
    row->addWidget(m_destination, 1);
    m_choose = named(makeButton(tr("Choose\u2026")), QStringLiteral("export.choose"),
                     tr("Choose the folder that gets the package"));
    connect(m_choose, &QPushButton::clicked, this, &ExportTab::chooseDestination);
    row->addWidget(m_choose);
    column->addLayout(row);
    column->addSpacing(spacing::small);

    column->addWidget(new TextLabel(tr("FORM"), TextRole::overline, TextLabel::Ink::secondary));
    m_form = named(new ChoiceTileGroup(180), QStringLiteral("export.form"),
                   tr("How the package holds its chunks"));
    m_form->add(QStringLiteral("arrayLiteral"), tr("Readable"),
                tr("One array literal that people can read. For small packages."));
    m_form->add(QStringLiteral("compact"), tr("Compact"),
                tr("Packed into string literals. For any number of chunks and every character."));
    connect(m_form, &ChoiceTileGroup::chosen, this, [this](int index) {
        m_screen.isCompact = index == 1;
        showScreen();
    });
    column->addWidget(m_form);
    m_warning = new Banner(Tone::warning);
    m_warning->setObjectName(QStringLiteral("export.warning"));
    column->addWidget(m_warning);
    column->addSpacing(spacing::small);

    m_export = named(makeButton(toQt(exportButton), ButtonKind::primary),
                     QStringLiteral("export.export"), toQt(exportButton));
    connect(m_export, &QPushButton::clicked, this, &ExportTab::pressButton);
    column->addWidget(m_export, 0, Qt::AlignLeft);
    m_progress = named(new QProgressBar, QStringLiteral("export.progress"),
                       tr("The package is being written"));
    m_progress->setRange(0, 0);
    m_progress->setTextVisible(false);
    column->addWidget(m_progress);
    m_note = (new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary))->wrapping();
    m_note->setObjectName(QStringLiteral("export.note"));
    column->addWidget(m_note);
    m_done = new Banner(Tone::success);
    m_done->setObjectName(QStringLiteral("export.done"));
    auto* show = named(makeButton(tr("Show in Folder"), ButtonKind::plain),
                       QStringLiteral("export.show"), tr("Show the package in its folder"));
    connect(show, &QPushButton::clicked, this, [this] {
        if (m_screen.exportAlert) {
            QDesktopServices::openUrl(QUrl::fromLocalFile(toQt(m_screen.exportAlert->message())));
        }
    });
    m_done->addAction(show);
    column->addWidget(m_done);
    return card;
}

Card* ExportTab::makePreview() {
    auto* card = new Card;
    QVBoxLayout* const column = card->content();
    column->addWidget(new SectionTitle(toQt(previewTitle), toQt(previewNote)));
    m_files = new QGridLayout;
    m_files->setHorizontalSpacing(spacing::small);
    m_files->setVerticalSpacing(spacing::tight);
    m_files->setColumnStretch(1, 1);
    column->addLayout(m_files);
    column->addSpacing(spacing::small);
    column->addWidget(
        (new TextLabel(toQt(usageIntroduction), TextRole::body, TextLabel::Ink::secondary))
            ->wrapping());
    m_usage = new SwiftCodeView;
    m_usage->setObjectName(QStringLiteral("export.usage"));
    column->addWidget(m_usage);
    return card;
}

void ExportTab::refresh() {
    m_name->setText(toQt(packageName(state().project->name)));
    m_chunks->setText(toQt(exportSummary(state())));
    const auto rows = exportChecklist(state());
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        m_rows[i]->setRow(rows[i]);
    }
    showFiles();
    m_usage->setText(toQt(usageText(state())));
    examineChunks();
    showScreen();
}

void ExportTab::showFiles() {
    const auto files = previewFiles(state());
    for (std::size_t i = 0; i < files.size(); ++i) {
        if (i == m_paths.size()) {
            const int row = static_cast<int>(i);
            m_files->addWidget(
                new IconView(QStringLiteral("document"), Tone::neutral, spacing::icon), row, 0);
            m_paths.push_back(new ElidedLabel({}, TextRole::code));
            m_paths[i]->setElideMode(Qt::ElideMiddle);
            m_paths[i]->setObjectName(QStringLiteral("export.file.%1").arg(row));
            m_files->addWidget(m_paths[i], row, 1);
            m_sizes.push_back(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary));
            m_sizes[i]->setObjectName(QStringLiteral("export.size.%1").arg(row));
            m_files->addWidget(m_sizes[i], row, 2);
        }
        m_paths[i]->setText(toQt(files[i].path));
        m_sizes[i]->setText(toQt(files[i].size.value_or("")));
    }
}

void ExportTab::showScreen() {
    const auto blocked = exportBlockedText(state());
    m_destination->setText(toQt(destinationText(m_screen)));
    m_destination->setInk(m_screen.destinationURL ? TextLabel::Ink::text
                                                  : TextLabel::Ink::secondary);
    m_choose->setEnabled(!m_isExporting && !m_screen.isChoosingDestination);
    m_form->setCurrentIndex(m_screen.isCompact ? 1 : 0);
    m_form->setEnabled(!m_isExporting);
    m_warning->showOrHide(!m_screen.isCompact && m_literalWarning ? toQt(*m_literalWarning)
                                                                  : QString());
    m_export->setEnabled(!blocked && !m_isExporting);
    m_progress->setVisible(m_isExporting);
    m_note->setText(m_isExporting ? tr("Writing the package\u2026")
                    : blocked     ? toQt(*blocked)
                                  : QString());
    m_note->setVisible(!m_note->text().isEmpty());
    const auto* success = m_screen.exportAlert
                              ? std::get_if<ExportAlert::Success>(&m_screen.exportAlert->value)
                              : nullptr;
    m_done->showOrHide(success && !m_isExporting
                           ? tr("%1 is written.").arg(toQt(success->package.filename()))
                           : QString());
}

void ExportTab::chooseDestination() {
    m_screen.isChoosingDestination = true;
    showScreen();
    const QString start = m_screen.destinationURL ? toQt(*m_screen.destinationURL)
                                                  : services().settings().lastFolder();
    auto* panel = new QFileDialog(this, tr("Choose the folder that gets the package"), start);
    panel->setObjectName(QStringLiteral("export.panel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::Directory);
    panel->setOption(QFileDialog::ShowDirsOnly);
    panel->setLabelText(QFileDialog::Accept, tr("Choose"));
    connect(panel, &QFileDialog::fileSelected, this, [this](const QString& folder) {
        m_screen.destinationURL = pathFromQt(folder);
        services().settings().setLastFolder(folder);
    });
    connect(panel, &QDialog::finished, this, [this] {
        m_screen.isChoosingDestination = false;
        showScreen();
    });
    panel->open();
}

// Exporting.

void ExportTab::pressButton() {
    if (ExportWork work = exportWork(m_screen, state())) {
        m_isExporting = true;
        showScreen();
        spawn(writePackage(this, state().platform().executor, std::move(work)));
    }
}

Task<void> ExportTab::writePackage(QPointer<ExportTab> tab, std::shared_ptr<MainExecutor> executor,
                                   ExportWork work) {
    using Package = Result<std::filesystem::path>;
    Task<Package> task = onWorker<Package>(executor, work);
    const Package package = co_await std::move(task);
    if (tab) {
        tab->finish(package);
    }
}

void ExportTab::finish(const Result<std::filesystem::path>& package) {
    m_isExporting = false;
    endExport(m_screen, package);
    showScreen();
    alert(window(), toQt(m_screen.exportAlert->title()), toQt(m_screen.exportAlert->message()));
}

// What the compiler would say.

void ExportTab::examineChunks() {
    IndexedChunks pairs = state().indexedChunks();
    const bool isExamined = std::ranges::equal(pairs, m_examined, {}, identityOf, identityOf);
    if (m_isExamining || isExamined) {
        return; // when it is examined, the next refresh looks again
    }
    m_isExamining = true;
    m_examined = pairs;
    spawn(examine(this, state().platform().executor, std::move(pairs)));
}

void ExportTab::hideEvent(QHideEvent* event) {
    m_examined.clear();
    TabPage::hideEvent(event);
}

Task<void> ExportTab::examine(QPointer<ExportTab> tab, std::shared_ptr<MainExecutor> executor,
                              IndexedChunks pairs) {
    using Warning = std::optional<std::string>;
    std::function<Warning()> work = [pairs] { return arrayLiteralWarning(pairs); };
    Task<Warning> task = onWorker<Warning>(executor, work);
    Warning warning = co_await std::move(task);
    if (tab) {
        tab->m_isExamining = false;
        tab->m_literalWarning = std::move(warning);
        tab->refreshLater();
    }
}

} // namespace ombrel
