#include "shell/tabs/SourceDetail.h"

#include "knowledge/SourceTexts.h"
#include "platform/LanguageRecognizer.h"
#include "shell/QtText.h"
#include "shell/design/Badge.h"
#include "shell/design/Button.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/Icon.h"
#include "shell/design/IconView.h"
#include "shell/design/Named.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"
#include "shell/design/WrapLayout.h"
#include "shell/tabs/SourcesModel.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLocale>

namespace ombrel {

namespace {

// Enough text to tell a language by.
constexpr std::size_t languageSample = 4000;
constexpr int excerptLength = 220;

// The start of a text, without a part of a character at its end.
std::string_view startOf(std::string_view text, std::size_t bytes) {
    if (text.size() <= bytes) {
        return text;
    }
    while (bytes > 0 && (static_cast<unsigned char>(text[bytes]) & 0xC0U) == 0x80U) {
        bytes -= 1;
    }
    return text.substr(0, bytes);
}

QString excerptOf(const ChunkArray& chunks) {
    if (chunks.empty()) {
        return {};
    }
    const std::string& text = chunks[0].text;
    const QString start = toQt(startOf(text, std::size_t{4} * excerptLength)).simplified();
    return start.size() > excerptLength ? start.left(excerptLength).trimmed() + QChar(0x2026)
                                        : start;
}

QString languageName(const std::string& identifier) {
    const QLocale locale(toQt(identifier));
    return locale.language() == QLocale::C ? toQt(identifier)
                                           : QLocale::languageToString(locale.language());
}

} // namespace

SourceDetail::SourceDetail(QWidget* parent)
    : Card(parent), m_icon(new IconView(QStringLiteral("document"), Tone::accent, 22)),
      m_name(new ElidedLabel({}, TextRole::heading)), m_status(new Badge),
      m_counts(new TextLabel({}, TextRole::body, TextLabel::Ink::secondary)),
      m_place(new ElidedLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_facts(new TextLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_advice((new TextLabel({}, TextRole::body, TextLabel::Ink::warning))->wrapping()),
      m_excerpt(new ElidedLabel({}, TextRole::caption, TextLabel::Ink::secondary)),
      m_open(named(makeButton(tr("Open File")), QStringLiteral("sources.open"), tr("Open File"))),
      m_folder(named(makeButton(tr("Show in Folder")), QStringLiteral("sources.showInFolder"),
                     tr("Show in Folder"))),
      m_chunks(named(makeButton(tr("Show Chunks")), QStringLiteral("sources.showChunks"),
                     tr("Show Chunks"))),
      m_remove(named(makeButton(tr("Remove"), ButtonKind::danger), QStringLiteral("sources.remove"),
                     tr("Remove"))) {
    setObjectName(QStringLiteral("sources.detail"));
    m_name->setObjectName(QStringLiteral("sources.detail.name"));
    m_name->setElideMode(Qt::ElideMiddle);
    m_status->setObjectName(QStringLiteral("sources.detail.status"));
    m_counts->setObjectName(QStringLiteral("sources.detail.counts"));
    m_place->setObjectName(QStringLiteral("sources.detail.place"));
    m_place->setElideMode(Qt::ElideMiddle);
    m_facts->setObjectName(QStringLiteral("sources.detail.facts"));
    m_advice->setObjectName(QStringLiteral("sources.detail.advice"));
    m_excerpt->setObjectName(QStringLiteral("sources.detail.excerpt"));

    auto* head = new QHBoxLayout;
    head->setSpacing(spacing::small);
    head->addWidget(m_icon);
    head->addWidget(m_name, 1);
    head->addWidget(m_counts);
    head->addSpacing(spacing::small);
    head->addWidget(m_status);
    content()->addLayout(head);
    auto* where = new QHBoxLayout;
    where->setSpacing(spacing::large);
    where->addWidget(m_place, 1);
    where->addWidget(m_facts);
    content()->addLayout(where);
    content()->addWidget(m_advice);
    content()->addWidget(m_excerpt);
    content()->addSpacing(spacing::tight);
    auto* buttons = new QWidget;
    auto* row = new WrapLayout(spacing::small);
    buttons->setLayout(row);
    for (QPushButton* button : {m_open, m_folder, m_chunks, m_remove}) {
        row->addWidget(button);
    }
    content()->addWidget(buttons);

    connect(m_open, &QPushButton::clicked, this, &SourceDetail::openWanted);
    connect(m_folder, &QPushButton::clicked, this, &SourceDetail::folderWanted);
    connect(m_chunks, &QPushButton::clicked, this, &SourceDetail::chunksWanted);
    connect(m_remove, &QPushButton::clicked, this, &SourceDetail::removeWanted);
}

void SourceDetail::show(const RAGIndex& index, const SourceDocument& source, int selectedCount,
                        const LanguageRecognizer& languages) {
    m_icon->setIcon(source.fileURL ? iconOf(source.type) : QStringLiteral("paste"), Tone::accent);
    m_name->setText(toQt(source.name));
    m_status->setText(toQt(source.status.label()));
    m_status->setTone(toneOf(source.status));
    m_counts->setText(numberText(source.chunkCount) + tr(" chunks") + QStringLiteral(" \u00b7 ") +
                      toQt(averageChunkText(source)));
    const bool isFile = source.fileURL.has_value();
    const bool isPasted = source.pastedText.has_value();
    m_place->setText(isFile     ? toQt(*source.fileURL)
                     : isPasted ? tr("Pasted text, kept in the project")
                                : tr("Where the file lies isn\u2019t known any more; its chunks "
                                     "stay in force"));
    m_facts->setText(facts(index, source, languages));
    const QString advice = toQt(statusAdvice(source, index.currentSettings()));
    m_advice->setText(advice);
    m_advice->setVisible(!advice.isEmpty());
    const auto chunks = index.chunksByDocument.find(source.id);
    const QString excerpt =
        chunks == index.chunksByDocument.end() ? QString() : excerptOf(chunks->second);
    m_excerpt->setText(excerpt);
    m_excerpt->setVisible(!excerpt.isEmpty() && advice.isEmpty());

    m_open->setText(isPasted && !isFile ? tr("View Text") : tr("Open File"));
    m_open->setAccessibleName(m_open->text());
    m_open->setVisible(isFile || isPasted);
    m_folder->setVisible(isFile);
    m_chunks->setEnabled(source.chunkCount > 0);
    m_remove->setText(selectedCount > 1 ? tr("Remove %1 Documents").arg(numberText(selectedCount))
                                        : tr("Remove"));
    m_remove->setAccessibleName(m_remove->text());
}

QString SourceDetail::facts(const RAGIndex& index, const SourceDocument& source,
                            const LanguageRecognizer& languages) {
    QStringList parts;
    parts.append(toQt(sourceTypeText(source)));
    const auto chunks = index.chunksByDocument.find(source.id);
    if (chunks != index.chunksByDocument.end() && !chunks->second.empty()) {
        const void* identity = chunks->second.identity();
        if (identity != m_recognized) {
            m_recognized = identity;
            const auto language =
                languages.dominantLanguage(startOf(chunks->second[0].text, languageSample));
            m_language = language ? languageName(*language) : QString();
        }
        if (!m_language.isEmpty()) {
            parts.append(m_language);
        }
    }
    if (source.fileURL) {
        const QFileInfo file(toQt(*source.fileURL));
        parts.append(file.exists() ? QLocale().formattedDataSize(file.size())
                                   : tr("the file isn\u2019t there any more"));
    } else if (source.pastedText) {
        parts.append(
            QLocale().formattedDataSize(static_cast<qint64>(source.pastedText->text().size())));
    }
    parts.append(tr("%1 tokens").arg(numberText(source.tokenCount)));
    return parts.join(QStringLiteral(" \u00b7 "));
}

} // namespace ombrel
