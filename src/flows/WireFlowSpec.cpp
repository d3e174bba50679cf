#include "flows/WireFlowSpec.h"

#include "core/DeepJsonWriter.h"

namespace ombrel {

bool encode(JsonWriter& writer, const WireFlowSpec& spec) {
    return DeepJsonWriter(writer).write(spec);
}

} // namespace ombrel
