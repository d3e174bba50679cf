#include "flows/WireFlowRunRequest.h"

#include "core/DeepJsonWriter.h"

namespace ombrel {

bool encode(JsonWriter& writer, const WireFlowRunRequest& request) {
    return DeepJsonWriter(writer).write(request);
}

} // namespace ombrel
