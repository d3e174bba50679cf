#pragma once

#include "platform/ModelEndpoints.h"

#include <vector>

namespace ombrel::test {

// Gives the variables that the test has set.
class ScriptedEndpoints : public ModelEndpoints {
  public:
    EnvironmentVariables variables{{"OMBREL_MODEL_URL", "http://127.0.0.1:9/v1"}};
    std::vector<bool> asked; // with embeddings or without, one for each time

    Task<EnvironmentVariables> environment(bool withEmbeddings) override {
        asked.push_back(withEmbeddings);
        return [](EnvironmentVariables given) -> Task<EnvironmentVariables> {
            co_return given;
        }(variables);
    }
};

} // namespace ombrel::test
