#include "shell/agents/AgentDiagramView.h"

#include "agents/AgentTexts.h"
#include "agents/OutputTexts.h"
#include "core/FindByID.h"
#include "shell/QtText.h"
#include "shell/agents/DiagramArrow.h"
#include "shell/design/Card.h"
#include "shell/design/ElidedLabel.h"
#include "shell/design/IconView.h"
#include "shell/design/RestText.h"
#include "shell/design/Spacing.h"
#include "shell/design/TextLabel.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>

namespace ombrel {

namespace {

// Rows of one box; more are counted.
constexpr std::size_t mostRows = 12;

ElidedLabel* makeLabel(const std::string& text, const QString& name, TextRole role,
                       TextLabel::Ink ink = TextLabel::Ink::text) {
    auto* label = new ElidedLabel(toQt(text), role, ink);
    label->setObjectName(name);
    return label;
}

Card* makeBox() {
    auto* card = new Card;
    card->content()->setContentsMargins(spacing::medium, spacing::small, spacing::medium,
                                        spacing::small);
    card->content()->setSpacing(spacing::tight);
    return card;
}

template <class T>
void addRest(QVBoxLayout& column, const std::vector<T>& things) {
    if (things.size() > mostRows) {
        column.addWidget(new TextLabel(restText(things.size() - mostRows), TextRole::caption,
                                       TextLabel::Ink::secondary));
    }
}

} // namespace

AgentDiagramView::AgentDiagramView(QWidget* parentWidget)
    : QWidget(parentWidget), m_column(new QVBoxLayout(this)) {
    setObjectName(QStringLiteral("agent.diagram"));
    setAccessibleName(tr("How this agent runs"));
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(spacing::medium);
    auto* title =
        new TextLabel(tr("HOW THIS AGENT RUNS"), TextRole::overline, TextLabel::Ink::secondary);
    title->setObjectName(QStringLiteral("agent.diagram.title"));
    m_column->addWidget(title);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
}

AgentDiagramView::Content AgentDiagramView::contentOf(const Agent& agent,
                                                      const std::vector<ToolDefinition>& tools,
                                                      const std::vector<RAGIndex>& ragIndexes) {
    Content content;
    const auto unnamed = [](const std::string& name) {
        return name.empty() ? std::string("(unnamed)") : name;
    };
    for (const AgentProperty& property : agent.input) {
        content.input.emplace_back(unnamed(property.name), propertyTypeText(property));
    }
    content.name = agent.name;
    content.tokens = diagramTokensText(agent);
    for (const std::string& name : agent.contextFieldNames) {
        content.context.push_back(contextPlaceholder(name));
    }
    for (const Uuid id : agent.toolIDs) {
        if (const ToolDefinition* tool = findByID(tools, id)) {
            content.tools.push_back(unnamed(tool->name));
        }
    }
    for (const AgentRAGAttachment& attachment : agent.ragAttachments) {
        if (const RAGIndex* index = findByID(ragIndexes, attachment.ragIndexID)) {
            content.knowledge.emplace_back(index->name, attachmentText(attachment));
        }
    }
    if (const auto text = diagramOutputText(agent.output)) {
        content.outputText = *text;
    } else {
        for (const auto& row : outputDefinitionSummary(agent.output).rows) {
            content.output.emplace_back(row.name, row.typeLabel);
        }
    }
    return content;
}

QWidget* AgentDiagramView::makeRows(const QString& title, const QString& name,
                                    const std::vector<Content::Row>& rows,
                                    const std::string& otherwise) {
    auto* box = makeBox();
    box->setObjectName(name);
    box->content()->addWidget(new TextLabel(title, TextRole::caption, TextLabel::Ink::secondary));
    if (rows.empty()) {
        box->content()->addWidget(makeLabel(otherwise, name + QStringLiteral(".text"),
                                            TextRole::body, TextLabel::Ink::secondary));
    }
    for (std::size_t i = 0; i < std::min(rows.size(), mostRows); ++i) {
        const QString rowName = name + QLatin1Char('.') + QString::number(i);
        auto* line = new QHBoxLayout;
        line->setSpacing(spacing::small);
        line->addWidget(makeLabel(rows[i].first, rowName + QStringLiteral(".name"), TextRole::code),
                        1);
        if (!rows[i].second.empty()) {
            line->addWidget(makeLabel(rows[i].second, rowName + QStringLiteral(".type"),
                                      TextRole::code, TextLabel::Ink::accent));
        }
        box->content()->addLayout(line);
    }
    addRest(*box->content(), rows);
    return box;
}

QWidget* AgentDiagramView::makeAgent(const Content& content) {
    auto* box = makeBox();
    auto* head = new QHBoxLayout;
    head->setSpacing(spacing::small);
    head->addWidget(new IconView(QStringLiteral("agent"), Tone::accent, spacing::icon));
    head->addWidget(makeLabel(content.name, QStringLiteral("agent.diagram.name"), TextRole::strong),
                    1);
    box->content()->addLayout(head);
    box->content()->addWidget(makeLabel(content.tokens, QStringLiteral("agent.diagram.tokens"),
                                        TextRole::caption, TextLabel::Ink::secondary));
    for (std::size_t i = 0; i < std::min(content.context.size(), mostRows); ++i) {
        box->content()->addWidget(makeLabel(content.context[i],
                                            QStringLiteral("agent.diagram.context.%1").arg(i),
                                            TextRole::code, TextLabel::Ink::accent));
    }
    addRest(*box->content(), content.context);
    return box;
}

QWidget* AgentDiagramView::makeSide(const Content& content) {
    auto* side = new QWidget;
    auto* column = new QVBoxLayout(side);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(spacing::small);
    column->addStretch(1);
    const auto add = [column](const QString& icon, const std::string& title,
                              const std::string& note, const QString& name) {
        auto* box = makeBox();
        auto* line = new QHBoxLayout;
        line->setSpacing(spacing::small);
        line->addWidget(new IconView(icon, Tone::neutral, spacing::icon));
        line->addWidget(makeLabel(title, name, TextRole::body), 1);
        box->content()->addLayout(line);
        if (!note.empty()) {
            box->content()->addWidget(makeLabel(note, name + QStringLiteral(".note"),
                                                TextRole::caption, TextLabel::Ink::secondary));
        }
        column->addWidget(box);
    };
    for (std::size_t i = 0; i < std::min(content.tools.size(), mostRows); ++i) {
        add(QStringLiteral("tool"), content.tools[i], {},
            QStringLiteral("agent.diagram.tool.%1").arg(i));
    }
    addRest(*column, content.tools);
    for (std::size_t i = 0; i < std::min(content.knowledge.size(), mostRows); ++i) {
        add(QStringLiteral("rag"), content.knowledge[i].first, content.knowledge[i].second,
            QStringLiteral("agent.diagram.knowledge.%1").arg(i));
    }
    addRest(*column, content.knowledge);
    column->addStretch(1);
    return side;
}

void AgentDiagramView::showAgent(const Agent& agent, const std::vector<ToolDefinition>& tools,
                                 const std::vector<RAGIndex>& ragIndexes) {
    Content content = contentOf(agent, tools, ragIndexes);
    if (m_shown == content) {
        return;
    }
    delete m_drawing;
    m_drawing = new QWidget;
    auto* column = new QVBoxLayout(m_drawing);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeRows(tr("Input"), QStringLiteral("agent.diagram.input"), content.input,
                               std::string(noInputFieldsText)));
    const bool hasSide = !content.tools.empty() || !content.knowledge.empty();
    // Above and below the agent, which leaves the other half to what is beside it.
    const auto addArrow = [column, hasSide] {
        auto* line = new QHBoxLayout;
        line->setSpacing(0);
        line->addWidget(new DiagramArrow(Qt::Vertical), 1);
        if (hasSide) {
            line->addSpacing(spacing::large);
            line->addStretch(1);
        }
        column->addLayout(line);
    };
    addArrow();
    auto* middle = new QHBoxLayout;
    middle->setSpacing(0);
    middle->addWidget(makeAgent(content), 1);
    if (hasSide) {
        middle->addWidget(new DiagramArrow(Qt::Horizontal));
        middle->addWidget(makeSide(content), 1);
    }
    column->addLayout(middle);
    addArrow();
    column->addWidget(makeRows(tr("Output"), QStringLiteral("agent.diagram.output"), content.output,
                               content.outputText));
    m_column->addWidget(m_drawing);
    m_shown = std::move(content);
}

} // namespace ombrel
