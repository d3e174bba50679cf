#include "flows/WireProjectExportRequest.h"

#include "core/DeepJsonWriter.h"

namespace ombrel {

bool encode(JsonWriter& writer, const WireProjectExportRequest& request) {
    return DeepJsonWriter(writer).write(request);
}

} // namespace ombrel
