#pragma once

#include "platform/MainExecutor.h"
#include "platform/Platform.h"
#include "platform/ServiceSettings.h"

#include <memory>

namespace ombrel {

// The services of this machine as the settings say: the user's own servers where an address is set,
// else `llama-server` with the models of the models folder, started when they are first asked.
// Nothing is started or read from the network here.
Platform makeLocalPlatform(std::shared_ptr<MainExecutor> executor, ServiceSettings settings);

} // namespace ombrel
