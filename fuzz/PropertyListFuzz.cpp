// Reads any bytes as a project file. What can be read is written and read again, and must then
// give the same bytes.
#include "core/ProjectFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto first =
        ombrel::readSnapshot(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!first) {
        return first.error().message.empty() ? (std::abort(), 0) : 0;
    }
    const auto written = ombrel::writeFile(first->snapshot);
    if (!written) {
        std::abort();
    }
    const auto second = ombrel::readSnapshot(*written);
    if (!second || second->leftBehind.any()) {
        std::abort();
    }
    const auto again = ombrel::writeFile(second->snapshot);
    if (!again || *again != *written) {
        std::abort();
    }
    return 0;
}
