#pragma once

#include "core/Record.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace ombrel {

// What an import could not keep of the source.
struct GenerableImportWarning {
    std::optional<std::int64_t> line; // of the source, from 1
    std::string message;

    // What tells warnings apart in a list.
    std::string id() const { return std::to_string(line.value_or(0)) + ":" + message; }

    static constexpr auto keys() {
        return std::tuple(ombrel::optional("line", &GenerableImportWarning::line),
                          required("message", &GenerableImportWarning::message));
    }
    bool operator==(const GenerableImportWarning&) const = default;
};

} // namespace ombrel

template <>
struct std::hash<ombrel::GenerableImportWarning> {
    std::size_t operator()(const ombrel::GenerableImportWarning& warning) const {
        return std::hash<std::string>()(warning.id());
    }
};
