#include "shell/agents/GenerableImportSheet.h"

#include "generable/ImportTexts.h"
#include "platform/TextFile.h"
#include "shell/QtText.h"
#include "shell/Worker.h"
#include "shell/agents/OutputRowDelegate.h"
#include "shell/agents/OutputRowsModel.h"
#include "shell/agents/SwiftSourceEditor.h"
#include "shell/agents/WarningDelegate.h"
#include "shell/agents/WarningsModel.h"
#include "shell/design/Banner.h"
#include "shell/design/Button.h"
#include "shell/design/Card.h"
#include "shell/design/ChoiceBox.h"
#include "shell/design/FileDropArea.h"
#include "shell/design/Icon.h"
#include "shell/design/Named.h"
#include "shell/design/ResizeOnScreen.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QListView>
#include <QPointer>
#include <QPushButton>
#include <QShortcut>
#include <QTextDocument>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace ombrel {

namespace {

// Characters from which on reading waits for a pause in typing.
constexpr int largeSource = 1 << 16;
constexpr int typingPause = 250; // ms
constexpr int leastListHeight = 44;

QListView* makeList(const QString& name, const QString& what) {
    auto* list = named(new QListView, name, what);
    list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->setLayoutMode(QListView::Batched);
    list->setResizeMode(QListView::Adjust);
    return list;
}

} // namespace

GenerableImportSheet::GenerableImportSheet(std::shared_ptr<MainExecutor> executor,
                                           OnImport onImport, QWidget* over)
    : QDialog(over), m_executor(std::move(executor)), m_onImport(std::move(onImport)),
      m_reading(std::make_shared<GenerableReading>()),
      m_source(named(new SwiftSourceEditor, QStringLiteral("import.source"), tr("Swift source"))),
      m_fileError(new Banner(Tone::danger)),
      m_status((new TextLabel({}, TextRole::body, TextLabel::Ink::secondary))->wrapping()),
      m_busy(new TextLabel(tr("Reading\u2026"), TextRole::caption, TextLabel::Ink::secondary)),
      m_type(named(new ChoiceBox, QStringLiteral("import.type"), tr("Output type"))),
      m_heading(new TextLabel({}, TextRole::strong)), m_rowsModel(new OutputRowsModel(this)),
      m_rows(makeList(QStringLiteral("import.rows"), tr("Preview"))),
      m_warningsHeading(new TextLabel({}, TextRole::overline, TextLabel::Ink::warning)),
      m_warningsModel(new WarningsModel(this)),
      m_warnings(makeList(QStringLiteral("import.warnings"), tr("Warnings"))),
      m_import(named(makeButton(tr("Import"), ButtonKind::primary), QStringLiteral("import.go"),
                     tr("Import"))) {
    setObjectName(QStringLiteral("importSheet"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(toQt(importTitle));
    setAccessibleName(windowTitle());
    setSizeGripEnabled(true);
    m_typingPause.setSingleShot(true);

    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(spacing::wide, spacing::wide, spacing::wide, spacing::large);
    column->setSpacing(spacing::small);
    column->addWidget(new TextLabel(windowTitle(), TextRole::heading));
    auto* explanation =
        (new TextLabel(toQt(importExplanation), TextRole::body, TextLabel::Ink::secondary))
            ->wrapping();
    explanation->setObjectName(QStringLiteral("import.explanation"));
    column->addWidget(explanation);
    column->addSpacing(spacing::small);
    auto* sides = new QHBoxLayout;
    sides->setSpacing(spacing::large);
    sides->addWidget(makeSourceSide(), 6);
    sides->addWidget(makeResultSide(), 5);
    column->addLayout(sides, 1);
    column->addSpacing(spacing::tight);
    column->addLayout(makeFoot());
    setMinimumSize(720, 480);
    resizeOnScreen(*this, {1080, 720});

    connect(m_source, &QPlainTextEdit::textChanged, this, &GenerableImportSheet::sourceChanged);
    connect(&m_typingPause, &QTimer::timeout, this, &GenerableImportSheet::read);
    connect(m_type, &QComboBox::activated, this, [this](int index) {
        m_selectedRootName = m_reading->typeNames[static_cast<std::size_t>(index)];
        read();
    });
    const auto goToWarning = [this](const QModelIndex& index) {
        m_source->showLine(
            static_cast<int>(m_warningsModel->warning(index.row()).line.value_or(1)));
    };
    connect(m_warnings, &QListView::clicked, this, goToWarning);
    connect(m_warnings, &QListView::activated, this, goToWarning);
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto* imports = new QShortcut(QKeySequence(Qt::CTRL | key), this);
        connect(imports, &QShortcut::activated, this, &GenerableImportSheet::import);
    }
    showReading();
    m_source->setFocus();
}

QWidget* GenerableImportSheet::makeSourceSide() {
    auto* side = new QWidget;
    auto* open = named(makeButton(tr("Open .swift File\u2026")), QStringLiteral("import.open"),
                       tr("Open .swift File\u2026"));
    open->setIcon(themeIcon(QStringLiteral("folder-open")));
    open->setAutoDefault(false);
    connect(open, &QPushButton::clicked, this, &GenerableImportSheet::chooseFile);
    auto* title = new SectionTitle(tr("SWIFT SOURCE"), {}, TextRole::overline);
    title->addControl(open);
    m_fileError->setObjectName(QStringLiteral("import.fileError"));
    m_fileError->hide();
    auto* column = new QVBoxLayout(side);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::small);
    column->addWidget(title);
    column->addWidget(m_fileError);
    column->addWidget(m_source, 1);
    column->addWidget(new TextLabel(tr("Or drop a .swift file here."), TextRole::caption,
                                    TextLabel::Ink::secondary));
    auto* drop = new FileDropArea(tr("Open the file"), tr("Swift source as text"), side);
    drop->setObjectName(QStringLiteral("import.drop"));
    connect(drop, &FileDropArea::dropped, this,
            [this](const QStringList& paths) { openFile(paths.front()); });
    return side;
}

QWidget* GenerableImportSheet::makeResultSide() {
    auto* side = new QWidget;
    auto* title = new SectionTitle(tr("RESULT"), {}, TextRole::overline);
    m_busy->setObjectName(QStringLiteral("import.busy"));
    title->addControl(m_busy);
    // As high as the title beside it, which has a button.
    title->setMinimumHeight(QPushButton(tr("Open .swift File\u2026")).sizeHint().height());
    m_status->setObjectName(QStringLiteral("import.status"));
    m_status->setAlignment(Qt::AlignCenter);
    m_heading->setObjectName(QStringLiteral("import.heading"));
    m_warningsHeading->setObjectName(QStringLiteral("import.warningsHeading"));
    m_rows->setModel(m_rowsModel);
    m_rows->setItemDelegate(new OutputRowDelegate(this));
    m_warnings->setModel(m_warningsModel);
    m_warnings->setItemDelegate(new WarningDelegate(this));
    for (QListView* list : {m_rows, m_warnings}) {
        list->setMinimumHeight(leastListHeight);
    }
    m_type->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_type->setMinimumContentsLength(24);

    m_typeRow = new QWidget;
    auto* hint = (new TextLabel(toQt(outputTypeHint), TextRole::caption, TextLabel::Ink::secondary))
                     ->wrapping();
    hint->setObjectName(QStringLiteral("import.typeHint"));
    auto* choice = new QHBoxLayout;
    choice->setSpacing(spacing::small);
    choice->addWidget(new TextLabel(tr("Output type"), TextRole::strong));
    choice->addWidget(m_type, 1);
    auto* types = new QVBoxLayout(m_typeRow);
    types->setContentsMargins(0, 0, 0, spacing::small);
    types->setSpacing(spacing::tight);
    types->addWidget(hint);
    types->addLayout(choice);

    auto* card = new Card;
    card->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    m_result = new QWidget;
    auto* results = new QVBoxLayout(m_result);
    results->setContentsMargins(0, 0, 0, 0);
    results->setSpacing(spacing::small);
    results->addWidget(m_typeRow);
    results->addWidget(m_heading);
    results->addWidget(m_rows, 3);
    results->addWidget(m_warningsHeading);
    results->addWidget(m_warnings, 2);
    card->content()->addWidget(m_status, 1);
    card->content()->addWidget(m_result, 1);
    auto* column = new QVBoxLayout(side);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::small);
    column->addWidget(title);
    column->addWidget(card, 1);
    return side;
}

QLayout* GenerableImportSheet::makeFoot() {
    auto* note =
        (new TextLabel(toQt(importNote), TextRole::caption, TextLabel::Ink::secondary))->wrapping();
    note->setObjectName(QStringLiteral("import.note"));
    auto* cancel = named(makeButton(tr("Cancel")), QStringLiteral("import.cancel"), tr("Cancel"));
    cancel->setAutoDefault(false);
    m_import->setAutoDefault(false);
    m_import->setToolTip(tr("Ctrl+Return"));
    connect(cancel, &QPushButton::clicked, this, &GenerableImportSheet::reject);
    connect(m_import, &QPushButton::clicked, this, &GenerableImportSheet::import);
    auto* row = new QHBoxLayout;
    row->setSpacing(spacing::small);
    row->addWidget(note, 1);
    row->addSpacing(spacing::large);
    row->addWidget(cancel);
    row->addWidget(m_import);
    return row;
}

void GenerableImportSheet::chooseFile() {
    auto* panel = new QFileDialog(this, tr("Open a Swift file"), {}, tr("Swift files (*.swift)"));
    panel->setObjectName(QStringLiteral("import.panel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::ExistingFile);
    connect(panel, &QFileDialog::fileSelected, this, &GenerableImportSheet::openFile);
    panel->open();
}

void GenerableImportSheet::openFile(const QString& path) {
    auto reading = readFile(m_executor, fromQt(path), this);
    m_executor->spawn(std::move(reading));
}

Task<void> GenerableImportSheet::readFile(std::shared_ptr<MainExecutor> executor, std::string path,
                                          QPointer<GenerableImportSheet> sheet) {
    const std::function<Result<std::string>()> work = [path] {
        return readTextFile(std::filesystem::path(path));
    };
    auto reading = onWorker(executor, work);
    const Result<std::string> content = co_await std::move(reading);
    if (sheet) {
        sheet->takeFile(QFileInfo(toQt(path)).fileName(), content);
    }
}

void GenerableImportSheet::takeFile(const QString& name, const Result<std::string>& content) {
    if (!content) {
        m_fileError->showOrHide(toQt(unreadableFileText(fromQt(name), content.error().message)));
        return;
    }
    m_fileError->showOrHide({});
    m_source->replaceSource(toQt(*content));
}

void GenerableImportSheet::sourceChanged() {
    ++m_generation;
    m_import->setEnabled(false);
    m_typingPause.start(m_source->document()->characterCount() < largeSource ? 0 : typingPause);
}

void GenerableImportSheet::read() {
    m_typingPause.stop();
    ++m_generation;
    m_import->setEnabled(false);
    if (m_isReading) {
        return; // it is read again when that is done
    }
    m_isReading = true;
    m_busy->setVisible(m_source->document()->characterCount() >= largeSource);
    auto reading =
        readSource(m_executor, fromQt(m_source->source()), m_selectedRootName, m_generation, this);
    m_executor->spawn(std::move(reading));
}

Task<void> GenerableImportSheet::readSource(std::shared_ptr<MainExecutor> executor,
                                            std::string source, std::string rootName,
                                            int generation, QPointer<GenerableImportSheet> sheet) {
    const std::function<GenerableReading()> work = [source = std::move(source), rootName] {
        return readGenerable(source, rootName);
    };
    auto running = onWorker(executor, work);
    GenerableReading reading = co_await std::move(running);
    if (sheet) {
        sheet->takeReading(std::move(reading), generation);
    }
}

void GenerableImportSheet::takeReading(GenerableReading reading, int generation) {
    m_isReading = false;
    if (generation == m_generation) {
        m_selectedRootName = reading.rootName;
        m_reading = std::make_shared<const GenerableReading>(std::move(reading));
        showReading();
    } else if (!m_typingPause.isActive()) {
        read();
    }
}

void GenerableImportSheet::showReading() {
    const GenerableReading& reading = *m_reading;
    m_busy->hide();
    const bool hasTypes = !reading.typeNames.empty();
    m_status->setText(toQt(reading.isBlank ? emptySourceText : noTypesText));
    m_status->setVisible(reading.isBlank || !hasTypes);
    m_result->setVisible(!reading.isBlank && hasTypes);
    m_typeRow->setVisible(reading.typeNames.size() >= 2);
    m_type->showEntries(reading.typeChoices);
    const auto isRoot = [&](int index) {
        return index >= 0 && index < std::ssize(reading.typeNames) &&
               reading.typeNames[static_cast<std::size_t>(index)] == reading.rootName;
    };
    if (!isRoot(m_type->currentIndex())) {
        m_type->showChoice(static_cast<int>(std::ranges::find(reading.typeNames, reading.rootName) -
                                            reading.typeNames.begin()));
    }
    m_heading->setText(reading.heading);
    m_rowsModel->setRows(reading.rows);
    m_warningsHeading->setText(toQt(warningsHeading(reading.warnings.size())));
    m_warningsHeading->setVisible(!reading.warnings.empty());
    m_warnings->setVisible(!reading.warnings.empty());
    m_warningsModel->setWarnings(reading.warnings);
    m_source->setWarnings(reading.warnings);
    m_source->setColoring(std::shared_ptr<const SwiftColoring>(m_reading, &reading.coloring));
    m_import->setEnabled(reading.output.has_value());
}

void GenerableImportSheet::import() {
    if (m_import->isEnabled()) {
        m_onImport(*m_reading->output);
        accept();
    }
}

} // namespace ombrel
