#pragma once

#include "platform/OnDeviceModel.h"
#include "retrieval/CompositeSearcher.h"
#include "retrieval/RetrievalLog.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ombrel {

// What the model searches the knowledge base with while it answers one question. Main thread.
class RAGSearchTool : public Tool {
  public:
    // Every call finds at most `topK` hits and is written to the log.
    RAGSearchTool(CompositeSearcher searcher, std::int64_t topK, std::shared_ptr<RetrievalLog> log);

    std::string name() const override;
    std::string description() const override;
    // One string, `query`.
    GenerationSchema parameters() const override;
    // The passages found, by rank, each with its breadcrumb and the first 600 characters of its
    // parent's text or else its own. Arguments without a query find nothing.
    Task<std::string> call(GeneratedContent arguments) override;

  private:
    CompositeSearcher m_searcher;
    std::int64_t m_topK;
    std::shared_ptr<RetrievalLog> m_log;
};

} // namespace ombrel
