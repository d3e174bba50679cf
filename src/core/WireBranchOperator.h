#pragma once

#include "core/Record.h"

namespace ombrel {

// How a branch compares a field with its value.
enum class WireBranchOperator { equals, contains, isEmpty, greaterThan, lessThan };

constexpr auto rawValues(WireBranchOperator) {
    using enum WireBranchOperator;
    return std::array{RawValue<WireBranchOperator>{equals, "equals"},
                      RawValue<WireBranchOperator>{contains, "contains"},
                      RawValue<WireBranchOperator>{isEmpty, "isEmpty"},
                      RawValue<WireBranchOperator>{greaterThan, "greaterThan"},
                      RawValue<WireBranchOperator>{lessThan, "lessThan"}};
}

} // namespace ombrel
