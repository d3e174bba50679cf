#pragma once

#include "core/Record.h"

#include <cstdint>
#include <string>
#include <variant>

namespace ombrel {

// How a source came out of reading it.
struct SourceStatus {
    struct Oversized {
        std::int64_t count = 0; // chunks over twice the target
        static constexpr auto keys() { return std::tuple(required("_0", &Oversized::count)); }
        bool operator==(const Oversized&) const = default;
    };
    struct EmptyPage {
        std::int64_t count = 0; // pages without text
        static constexpr auto keys() { return std::tuple(required("_0", &EmptyPage::count)); }
        bool operator==(const EmptyPage&) const = default;
    };
    struct Ready {
        static constexpr auto keys() { return std::tuple<>(); }
        bool operator==(const Ready&) const = default;
    };

    std::variant<Oversized, EmptyPage, Ready> value = Ready{};

    static constexpr auto cases() {
        return std::tuple(payloadCase<Oversized>("oversized"), payloadCase<EmptyPage>("emptyPage"),
                          payloadCase<Ready>("ready"));
    }

    // What the user reads: "3 oversized", "1 empty page", "2 empty pages", "Ready".
    std::string label() const;
    bool operator==(const SourceStatus&) const = default;
};

} // namespace ombrel
