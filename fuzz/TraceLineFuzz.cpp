// Any bytes read as a line of a trace: an event that comes out, written as a line, is read as the
// same event.
#include "core/JsonEncoder.h"
#include "flows/TraceLine.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto event = ombrel::parseTraceLine(text);
    if (!event) {
        return 0;
    }
    auto again = ombrel::parseTraceLine(ombrel::encodeJson(*event));
    if (!again) {
        std::abort();
    }
    again->id = event->id;
    if (again != event) {
        std::abort();
    }
    return 0;
}
