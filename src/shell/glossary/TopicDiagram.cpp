#include "shell/glossary/TopicDiagram.h"

#include "shell/design/Theme.h"
#include "shell/glossary/ChunkSizeDiagram.h"
#include "shell/glossary/ChunkingStrategyDiagram.h"
#include "shell/glossary/ContextBudgetDiagram.h"
#include "shell/glossary/DiagramPen.h"
#include "shell/glossary/EnrichmentDiagram.h"
#include "shell/glossary/IndexDiagram.h"
#include "shell/glossary/OverlapDiagram.h"
#include "shell/glossary/QueryTransformDiagram.h"
#include "shell/glossary/RerankDiagram.h"
#include "shell/glossary/TopKDiagram.h"

#include <QPainter>

namespace ombrel {

namespace {

std::unique_ptr<Diagram> makeDiagram(GlossaryTopic topic) {
    switch (topic) {
    case GlossaryTopic::chunkingStrategy:
        return std::make_unique<ChunkingStrategyDiagram>();
    case GlossaryTopic::chunkSize:
        return std::make_unique<ChunkSizeDiagram>();
    case GlossaryTopic::overlap:
        return std::make_unique<OverlapDiagram>();
    case GlossaryTopic::index:
        return std::make_unique<IndexDiagram>();
    case GlossaryTopic::enrichment:
        return std::make_unique<EnrichmentDiagram>();
    case GlossaryTopic::queryTransform:
        return std::make_unique<QueryTransformDiagram>();
    case GlossaryTopic::rerank:
        return std::make_unique<RerankDiagram>();
    case GlossaryTopic::topK:
        return std::make_unique<TopKDiagram>();
    case GlossaryTopic::contextBudget:
        break;
    }
    return std::make_unique<ContextBudgetDiagram>();
}

} // namespace

TopicDiagram::TopicDiagram(GlossaryTopic topic, QWidget* parent)
    : QWidget(parent), m_topic(topic), m_diagram(makeDiagram(topic)) {
    setAccessibleName(tr("Diagram: %1").arg(title(topic)));
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    connect(&Theme::current(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

TopicDiagram::~TopicDiagram() = default;

QSize TopicDiagram::sizeHint() const {
    constexpr int wide = 400;
    return {wide, heightForWidth(wide)};
}

int TopicDiagram::heightForWidth(int width) const {
    DiagramPen ruler;
    return m_diagram->draw(ruler, width);
}

void TopicDiagram::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    DiagramPen pen(&painter);
    m_diagram->draw(pen, width());
}

} // namespace ombrel
