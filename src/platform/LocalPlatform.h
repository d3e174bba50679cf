#pragma once

#include "platform/MainExecutor.h"
#include "platform/Platform.h"
#include "platform/ServiceSettings.h"

#include <functional>
#include <memory>
#include <string>

namespace ombrel {

// The services of this machine as the settings say: the user's own servers where an address is set,
// else `llama-server` with the models that the models folder holds now, started when they are first
// asked. Nothing is started here. `onProgress` is told what the start of a server waits for.
Platform makeLocalPlatform(std::shared_ptr<MainExecutor> executor, ServiceSettings settings,
                           std::function<void(const std::string& status)> onProgress = {});

} // namespace ombrel
