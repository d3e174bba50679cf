#include "shell/ThingTitle.h"

#include "shell/QtText.h"

#include <QCoreApplication>

namespace ombrel {

namespace {

QString text(const char* words) {
    return QCoreApplication::translate("ThingTitle", words);
}

QString counted(std::int64_t count, const char* one, const char* many) {
    return numberText(count) + QLatin1Char(' ') + text(count == 1 ? one : many);
}

QString joined(const QString& first, const QString& second) {
    return first + QStringLiteral(" \u00b7 ") + second;
}

QString nameOr(const std::string& name, const char* untitled) {
    return name.empty() ? text(untitled) : toQt(name);
}

} // namespace

QString titleOf(const RAGIndex& index) {
    return toQt(index.name);
}

QString titleOf(const Agent& agent) {
    return nameOr(agent.name, QT_TRANSLATE_NOOP("ThingTitle", "Untitled Agent"));
}

QString titleOf(const ToolDefinition& tool) {
    return nameOr(tool.name, QT_TRANSLATE_NOOP("ThingTitle", "UntitledTool"));
}

QString titleOf(const Flow& flow) {
    return nameOr(flow.name, QT_TRANSLATE_NOOP("ThingTitle", "Untitled Flow"));
}

QString detailOf(const RAGIndex& index) {
    std::int64_t chunks = 0;
    for (const SourceDocument& source : index.sources) {
        chunks += source.chunkCount;
    }
    return joined(counted(std::ssize(index.sources), QT_TRANSLATE_NOOP("ThingTitle", "source"),
                          QT_TRANSLATE_NOOP("ThingTitle", "sources")),
                  counted(chunks, QT_TRANSLATE_NOOP("ThingTitle", "chunk"),
                          QT_TRANSLATE_NOOP("ThingTitle", "chunks")));
}

QString detailOf(const Agent& agent) {
    if (!agent.summary.empty()) {
        return toQt(agent.summary);
    }
    return joined(
        text(QT_TRANSLATE_NOOP("ThingTitle", "%1 output")).arg(toQt(rawValue(agent.output.kind()))),
        counted(std::ssize(agent.toolIDs), QT_TRANSLATE_NOOP("ThingTitle", "tool"),
                QT_TRANSLATE_NOOP("ThingTitle", "tools")));
}

QString detailOf(const ToolDefinition& tool) {
    if (!tool.description.empty()) {
        return toQt(tool.description);
    }
    return counted(std::ssize(tool.arguments), QT_TRANSLATE_NOOP("ThingTitle", "argument"),
                   QT_TRANSLATE_NOOP("ThingTitle", "arguments"));
}

QString detailOf(const Flow& flow) {
    return joined(toQt(rawValue(flow.kind)),
                  counted(std::ssize(flow.nodes), QT_TRANSLATE_NOOP("ThingTitle", "node"),
                          QT_TRANSLATE_NOOP("ThingTitle", "nodes")));
}

} // namespace ombrel
