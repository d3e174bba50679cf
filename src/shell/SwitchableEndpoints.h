#pragma once

#include "platform/ModelEndpoints.h"

#include <memory>
#include <utility>
#include <vector>

namespace ombrel {

// The way to the models that programs of the studio are told: another one can be put behind it,
// for programs that start from then on.
class SwitchableEndpoints final : public ModelEndpoints {
  public:
    void use(std::shared_ptr<ModelEndpoints> endpoints) {
        if (const auto kept = m_kept.lock()) {
            kept->push_back(std::exchange(m_endpoints, nullptr));
        }
        m_endpoints = std::move(endpoints);
    }

    // As long as the result lives, those that are replaced live on: programs may have been told of
    // them.
    std::shared_ptr<const void> hold() {
        auto kept = m_kept.lock();
        if (!kept) {
            kept = std::make_shared<Kept>();
            m_kept = kept;
        }
        return kept;
    }

    Task<EnvironmentVariables> environment(bool withEmbeddings) override {
        return answer(m_endpoints, withEmbeddings);
    }

  private:
    using Kept = std::vector<std::shared_ptr<ModelEndpoints>>;

    static Task<EnvironmentVariables> answer(std::shared_ptr<ModelEndpoints> asked,
                                             bool withEmbeddings) {
        co_return co_await asked->environment(withEmbeddings);
    }

    std::shared_ptr<ModelEndpoints> m_endpoints;
    std::weak_ptr<Kept> m_kept;
};

} // namespace ombrel
