#pragma once

#include "platform/ModelEndpoints.h"

#include <memory>
#include <utility>

namespace ombrel {

// The way to the models that programs of the studio are told: another one can be put behind it,
// for programs that start from then on.
class SwitchableEndpoints final : public ModelEndpoints {
  public:
    void use(std::shared_ptr<ModelEndpoints> endpoints) { m_endpoints = std::move(endpoints); }

    Task<EnvironmentVariables> environment(bool withEmbeddings) override {
        return answer(m_endpoints, withEmbeddings);
    }

  private:
    static Task<EnvironmentVariables> answer(std::shared_ptr<ModelEndpoints> asked,
                                             bool withEmbeddings) {
        co_return co_await asked->environment(withEmbeddings);
    }

    std::shared_ptr<ModelEndpoints> m_endpoints;
};

} // namespace ombrel
