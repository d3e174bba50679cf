#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <variant>

namespace ombrel {

// What the user is told after an export.
struct ExportAlert {
    struct Success {
        std::filesystem::path package;
        bool operator==(const Success&) const = default;
    };
    struct Failure {
        std::string message;
        bool operator==(const Failure&) const = default;
    };
    std::variant<Success, Failure> value;

    // "success:…" or "failure:…".
    std::string identity() const;
    std::string_view title() const;
    std::string message() const;

    bool operator==(const ExportAlert&) const = default;
};

} // namespace ombrel
