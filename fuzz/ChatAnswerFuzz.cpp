// Any bytes as a server's answer: what is read must not depend on how they were cut.
#include "platform/ChatCompletion.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

std::string reading(std::string_view bytes, std::size_t pieceLength) {
    ombrel::ChatAnswerReader reader;
    for (std::size_t i = 0; i < bytes.size(); i += pieceLength) {
        reader.take(bytes.substr(i, pieceLength));
    }
    const auto answer = reader.finish();
    if (!answer) {
        return "error " + answer.error().message;
    }
    std::string text = "answer " + answer->content + (answer->isCutOff ? " cut off" : "");
    for (const auto& call : answer->toolCalls) {
        text += "\n" + call.id + " " + call.name + " " + call.arguments;
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::string whole = reading(bytes, size + 1);
    if (reading(bytes, 1) != whole || reading(bytes, 7) != whole) {
        std::abort();
    }
    return 0;
}
