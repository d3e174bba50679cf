#pragma once

#include <string>

namespace ombrel {

// Why something stored could not be decoded.
struct DecodeError {
    std::string path; // such as "ragIndexes[0].variants[2].settings.topK"; empty for the root
    std::string message;

    // "PATH: MESSAGE".
    std::string text() const { return path.empty() ? message : path + ": " + message; }
    bool operator==(const DecodeError&) const = default;
};

} // namespace ombrel
