#pragma once

#include "core/Record.h"

#include <string>

namespace ombrel {

// How the export of a project's flows ended.
struct ExportOutcome {
    bool isSuccess = false;
    std::string message;   // for the alert
    std::string rawOutput; // standard output, a line feed and standard error

    static constexpr auto keys() {
        return std::tuple(required("isSuccess", &ExportOutcome::isSuccess),
                          required("message", &ExportOutcome::message),
                          required("rawOutput", &ExportOutcome::rawOutput));
    }
    bool operator==(const ExportOutcome&) const = default;
};

} // namespace ombrel
