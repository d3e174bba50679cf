#pragma once

#include "platform/Task.h"

#include <string>
#include <utility>
#include <vector>

namespace ombrel {

// Environment variables, as `ProcessLaunch` takes them.
using EnvironmentVariables = std::vector<std::pair<std::string, std::string>>;

// Tells programs that the studio starts how they reach the models of this machine. Main thread.
class ModelEndpoints {
  public:
    virtual ~ModelEndpoints() = default;

    // The variables for one program. They hold as long as the endpoints live:
    //   OMBREL_MODEL_URL    base address of an OpenAI-compatible server on loopback, with "/v1"
    //   OMBREL_MODEL_KEY    its bearer token, empty for none
    //   OMBREL_MODEL_NAME   the model to ask for, empty when there is no choice
    //   OMBREL_EMBEDDING_URL, _KEY, _NAME: the same for sentence vectors
    //   OMBREL_MODEL_ERROR  a sentence that says why there is no language model
    // All seven are always given, so that nothing of this process's own environment shows through:
    // those that do not apply are empty, as are the embedding's without `withEmbeddings` and when
    // there is no embedding model.
    virtual Task<EnvironmentVariables> environment(bool withEmbeddings) = 0;
};

} // namespace ombrel
