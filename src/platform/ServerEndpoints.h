#pragma once

#include "platform/MainExecutor.h"
#include "platform/ModelEndpoints.h"
#include "platform/ModelServer.h"

#include <memory>

namespace ombrel {

// The servers that this process itself asks. They are started when they are asked for, both at the
// same time, and live as long as this object.
class ServerEndpoints final : public ModelEndpoints {
  public:
    ServerEndpoints(std::shared_ptr<MainExecutor> executor, std::shared_ptr<ModelServer> language,
                    std::shared_ptr<ModelServer> embedding);

    Task<EnvironmentVariables> environment(bool withEmbeddings) override;

  private:
    std::shared_ptr<MainExecutor> m_executor;
    std::shared_ptr<ModelServer> m_language;
    std::shared_ptr<ModelServer> m_embedding;
};

} // namespace ombrel
