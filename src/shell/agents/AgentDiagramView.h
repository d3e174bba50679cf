#pragma once

#include "core/Agent.h"
#include "core/RAGIndex.h"
#include "core/ToolDefinition.h"

#include <QWidget>

#include <optional>
#include <string>
#include <utility>
#include <vector>

class QVBoxLayout;

namespace ombrel {

// How an agent runs, from what goes in to what comes out. The object names begin with
// "agent.diagram".
class AgentDiagramView final : public QWidget {
    Q_OBJECT

  public:
    explicit AgentDiagramView(QWidget* parent = nullptr);
    void showAgent(const Agent& agent, const std::vector<ToolDefinition>& tools,
                   const std::vector<RAGIndex>& ragIndexes);

  private:
    // What is drawn; nothing is made anew while it stays the same.
    struct Content {
        using Row = std::pair<std::string, std::string>; // a name, and its type where it has one
        std::vector<Row> input;
        std::string name;
        std::string tokens;
        std::vector<std::string> context;
        std::vector<std::string> tools;
        std::vector<Row> knowledge; // the index, and how much of it
        std::vector<Row> output;
        std::string outputText; // in place of rows
        bool operator==(const Content&) const = default;
    };
    static Content contentOf(const Agent& agent, const std::vector<ToolDefinition>& tools,
                             const std::vector<RAGIndex>& ragIndexes);
    static QWidget* makeRows(const QString& title, const QString& name,
                             const std::vector<Content::Row>& rows, const std::string& otherwise);
    static QWidget* makeAgent(const Content& content);
    static QWidget* makeSide(const Content& content);

    QVBoxLayout* m_column;
    QWidget* m_drawing = nullptr;
    std::optional<Content> m_shown;
};

} // namespace ombrel
