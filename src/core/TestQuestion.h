#pragma once

#include "core/QuestionStatus.h"
#include "core/Record.h"
#include "platform/Uuid.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// One evaluation case.
struct TestQuestion {
    Uuid id;
    std::string question;
    std::vector<std::string> expectedBreadcrumb;
    std::optional<std::vector<std::string>> lastGotBreadcrumb;
    std::optional<std::int64_t> lastRank;
    QuestionStatus status = QuestionStatus::notEvaluated;
    bool isDrafted = false; // by the model, not typed in

    static constexpr auto keys() {
        return std::tuple(required("id", &TestQuestion::id),
                          required("question", &TestQuestion::question),
                          required("expectedBreadcrumb", &TestQuestion::expectedBreadcrumb),
                          optional("lastGotBreadcrumb", &TestQuestion::lastGotBreadcrumb),
                          optional("lastRank", &TestQuestion::lastRank),
                          required("status", &TestQuestion::status),
                          required("isDrafted", &TestQuestion::isDrafted));
    }

    bool operator==(const TestQuestion&) const = default;
};

} // namespace ombrel
