#pragma once

#include "core/Encode.h"
#include "platform/JsonWriter.h"

#include <string>
#include <string_view>

namespace ombrel {

// Anything that `encode` takes: records, enumerations, arrays, maps, numbers, strings.
// What is nested deeper than `maximumNesting` is written as null; no decoder would take it.
template <class T>
std::string encodeJson(const T& value, JsonLayout layout = JsonLayout::compact) {
    std::string text;
    JsonWriter writer(
        [&text](std::string_view bytes) {
            text += bytes;
            return true;
        },
        layout);
    static_cast<void>(encode(writer, value));
    writer.finish();
    return text;
}

} // namespace ombrel
