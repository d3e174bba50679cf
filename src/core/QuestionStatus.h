#pragma once

#include "core/Record.h"

namespace ombrel {

enum class QuestionStatus { notEvaluated, passing, failing };

constexpr auto rawValues(QuestionStatus) {
    using enum QuestionStatus;
    return std::array{RawValue<QuestionStatus>{notEvaluated, "Not evaluated"},
                      RawValue<QuestionStatus>{passing, "Passing"},
                      RawValue<QuestionStatus>{failing, "Failing"}};
}

} // namespace ombrel
