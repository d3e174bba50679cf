#pragma once

#include "platform/Result.h"
#include "platform/Task.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ombrel {

// Where an OpenAI-compatible server answers.
struct ServerEndpoint {
    std::string url;   // up to and without "/v1"
    std::string key;   // bearer token, empty for none
    std::string model; // the name to ask for
    // How many tokens a request and its answer may have together, as far as it is known.
    std::int64_t contextTokens = 0;
    bool operator==(const ServerEndpoint&) const = default;
};

// A server on this machine that a model is asked through: one that the studio starts (LlamaServer)
// or one of the user's own (UserServer). Main thread.
class ModelServer {
  public:
    virtual ~ModelServer() = default;

    // Nothing when the server can be asked, as far as is known at once; else the case name of the
    // reason, as `ModelAvailability` has it.
    virtual std::optional<std::string> unavailableReason() = 0;
    // The server once it is ready to answer; starts it when it is ours and does not run.
    virtual Task<Result<ServerEndpoint>> ready() = 0;
    // To be told when nobody answered at an address that `ready` gave: the next `ready` starts a
    // server of ours again.
    virtual void connectionFailed() = 0;
};

} // namespace ombrel
