#pragma once

#include "core/Decode.h"
#include "platform/JsonReader.h"
#include "platform/Result.h"

#include <string>
#include <string_view>
#include <utility>

namespace ombrel {

// The error is the path of what is wrong and what was expected there, such as
// `variants[2].settings.topK: expected a number, found a string`. Keys that the record does not
// have are ignored.
template <class T>
Result<T> decodeJson(std::string_view text) {
    auto reader = JsonReader::open(text);
    if (!reader) {
        return tl::unexpected(std::move(reader.error()));
    }
    Decoder<JsonReader> decoder(*reader);
    T value{};
    if (!decoder.decodeWhole(reader->top(), value)) {
        return failure(decoder.error().text());
    }
    return value;
}

} // namespace ombrel
