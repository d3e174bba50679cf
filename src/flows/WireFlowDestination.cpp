#include "flows/WireFlowDestination.h"

namespace ombrel {

bool WireFlowRouting::Single::operator==(const Single&) const = default;
bool WireFlowRouting::ByCase::operator==(const ByCase&) const = default;
bool WireFlowRouting::operator==(const WireFlowRouting&) const = default;
bool WireFlowDestination::Branch::operator==(const Branch&) const = default;
bool WireFlowDestination::Tool::operator==(const Tool&) const = default;
bool WireFlowDestination::operator==(const WireFlowDestination&) const = default;

} // namespace ombrel
