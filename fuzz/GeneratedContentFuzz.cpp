// Any bytes as what a model wrote: what is read must be the same after it was written and read.
#include "platform/GeneratedContent.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using ombrel::GeneratedContent;
    const auto content =
        GeneratedContent::parse(std::string_view(reinterpret_cast<const char*>(data), size));
    if (content) {
        const auto again = GeneratedContent::parse(content->text());
        if (!again || !(*again == *content)) {
            std::abort();
        }
    }
    return 0;
}
