#include "shell/agents/AgentResultView.h"

#include "agents/AgentTexts.h"
#include "platform/FixedPoint.h"
#include "shell/QtText.h"
#include "shell/design/Button.h"
#include "shell/design/Card.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/MessageText.h"
#include "shell/design/RestText.h"
#include "shell/design/SectionTitle.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QClipboard>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <variant>

namespace ombrel {

namespace {

// More fields, or more chunks of an index, than these are counted only.
constexpr std::size_t mostRows = 100;

MessageText* makeText(const std::string& text, TextRole role,
                      TextLabel::Ink ink = TextLabel::Ink::text) {
    auto* view = new MessageText(role, ink);
    view->setText(toQt(text));
    return view;
}

TextLabel* makeRest(std::size_t count) {
    return new TextLabel(restText(count), TextRole::caption, TextLabel::Ink::secondary);
}

QWidget* makeValue(const AgentOutputFieldValue& value, const QString& name) {
    auto* cell = new QWidget;
    auto* column = new QVBoxLayout(cell);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::hair);
    const bool isMissing = std::holds_alternative<AgentOutputFieldValue::Missing>(value.value);
    const auto* enumCase = std::get_if<AgentOutputFieldValue::EnumCase>(&value.value);
    auto* text = makeText(valueText(value), enumCase ? TextRole::body : TextRole::code,
                          isMissing ? TextLabel::Ink::secondary : TextLabel::Ink::text);
    text->setObjectName(name);
    column->addWidget(text);
    if (enumCase && enumCase->description) {
        auto* about =
            makeText(*enumCase->description, TextRole::caption, TextLabel::Ink::secondary);
        about->setObjectName(name + QStringLiteral(".description"));
        column->addWidget(about);
    }
    return cell;
}

QWidget* makeChunk(const RetrievedContextChunk& chunk, const QString& name) {
    auto* box = new QFrame;
    box->setProperty("card", "flat");
    auto* column = new QVBoxLayout(box);
    column->setContentsMargins(spacing::medium, spacing::small, spacing::medium, spacing::small);
    column->setSpacing(spacing::tight);
    auto* breadcrumb = makeText(chunk.breadcrumb, TextRole::strong);
    breadcrumb->setObjectName(name + QStringLiteral(".breadcrumb"));
    auto* score =
        new TextLabel(toQt(fixedPoint(chunk.score, 2)), TextRole::code, TextLabel::Ink::secondary);
    score->setObjectName(name + QStringLiteral(".score"));
    auto* head = new QHBoxLayout;
    head->setSpacing(spacing::small);
    head->addWidget(breadcrumb, 1);
    head->addWidget(score, 0, Qt::AlignTop);
    auto* text = makeText(chunk.text, TextRole::body);
    text->setObjectName(name + QStringLiteral(".text"));
    column->addLayout(head);
    column->addWidget(text);
    return box;
}

} // namespace

AgentResultView::AgentResultView(QWidget* parentWidget)
    : QWidget(parentWidget), m_column(new QVBoxLayout(this)) {
    setObjectName(QStringLiteral("agent.result"));
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(spacing::large);
}

void AgentResultView::showResult(const AgentRunResult& result) {
    while (QLayoutItem* item = m_column->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    m_column->addWidget(makeAnswer(result));
    if (!result.retrievedContext.empty()) {
        m_column->addWidget(makeContext(result.retrievedContext));
    }
}

QWidget* AgentResultView::makeAnswer(const AgentRunResult& result) {
    auto* card = new Card;
    auto* title = new SectionTitle(tr("OUTPUT"), {}, TextRole::overline);
    auto* copy = makeIconButton(QStringLiteral("copy"), tr("Copy the answer"));
    copy->setObjectName(QStringLiteral("agent.result.copy"));
    QObject::connect(copy, &QToolButton::clicked, copy, [text = toQt(result.outputText)] {
        QGuiApplication::clipboard()->setText(text);
    });
    title->addControl(copy);
    card->content()->addWidget(title);
    if (!result.objectFields.empty()) {
        card->content()->addWidget(makeTable(result.objectFields));
        return card;
    }
    auto* text = makeText(result.outputText, TextRole::body,
                          result.isError ? TextLabel::Ink::danger : TextLabel::Ink::text);
    text->setObjectName(QStringLiteral("agent.result.text"));
    card->content()->addWidget(text);
    return card;
}

QWidget* AgentResultView::makeTable(const std::vector<AgentOutputField>& fields) {
    auto* table = new QWidget;
    table->setObjectName(QStringLiteral("agent.result.table"));
    auto* grid = new QGridLayout(table);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(spacing::large);
    grid->setVerticalSpacing(spacing::small);
    grid->setColumnStretch(0, 2);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(2, 4);
    int line = 0;
    for (int column = 0; const QString& title : {tr("Property"), tr("Type"), tr("Value")}) {
        grid->addWidget(new TextLabel(title, TextRole::caption, TextLabel::Ink::secondary), line,
                        column++);
    }
    for (std::size_t row = 0; row < std::min(fields.size(), mostRows); ++row) {
        const AgentOutputField& field = fields[row];
        const QString name = QStringLiteral("agent.result.%1").arg(row);
        grid->addWidget(makeRule(), ++line, 0, 1, 3);
        ++line;
        auto* title = makeText(field.name, TextRole::strong);
        title->setObjectName(name + QStringLiteral(".name"));
        auto* type = makeText(field.typeLabel, TextRole::code, TextLabel::Ink::secondary);
        type->setObjectName(name + QStringLiteral(".type"));
        grid->addWidget(title, line, 0, Qt::AlignTop);
        grid->addWidget(type, line, 1, Qt::AlignTop);
        grid->addWidget(makeValue(field.value, name + QStringLiteral(".value")), line, 2,
                        Qt::AlignTop);
    }
    if (fields.size() > mostRows) {
        grid->addWidget(makeRest(fields.size() - mostRows), ++line, 0, 1, 3);
    }
    return table;
}

QWidget* AgentResultView::makeContext(const std::vector<AgentRetrievedContext>& context) {
    auto* card = new Card;
    auto* title = new SectionTitle(toQt(retrievedContextHeading), {}, TextRole::overline);
    title->setObjectName(QStringLiteral("agent.result.context"));
    card->content()->addWidget(title);
    for (int group = 0; const AgentRetrievedContext& entry : context) {
        const QString name = QStringLiteral("agent.result.context.%1").arg(group++);
        auto* index = new ElidedLabel(toQt(entry.ragIndexName), TextRole::heading);
        index->setObjectName(name);
        card->content()->addWidget(index);
        if (entry.chunks.empty()) {
            auto* none =
                makeText(std::string(noChunksText), TextRole::body, TextLabel::Ink::secondary);
            none->setObjectName(name + QStringLiteral(".empty"));
            card->content()->addWidget(none);
        }
        for (std::size_t i = 0; i < std::min(entry.chunks.size(), mostRows); ++i) {
            card->content()->addWidget(
                makeChunk(entry.chunks[i], name + QLatin1Char('.') + QString::number(i)));
        }
        if (entry.chunks.size() > mostRows) {
            card->content()->addWidget(makeRest(entry.chunks.size() - mostRows));
        }
    }
    return card;
}

} // namespace ombrel
