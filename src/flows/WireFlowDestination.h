#pragma once

#include "core/Deep.h"
#include "core/WireBranchOperator.h"
#include "flows/WireAgentSpec.h"
#include "flows/WireToolSpec.h"

#include <map>
#include <string>
#include <variant>

// A destination and the routing behind an agent contain each other, so they share a file.
namespace ombrel {

struct WireFlowDestination;

// What follows an agent.
struct WireFlowRouting {
    struct Single {
        Deep<WireFlowDestination> destination;
        static constexpr auto keys() { return std::tuple(required("_0", &Single::destination)); }
        bool operator==(const Single&) const;
    };
    struct ByCase {
        std::map<std::string, Deep<WireFlowDestination>> destinations; // every case of the output
        static constexpr auto keys() { return std::tuple(required("_0", &ByCase::destinations)); }
        bool operator==(const ByCase&) const;
    };

    std::variant<Single, ByCase> value;

    static constexpr auto cases() {
        return std::tuple(payloadCase<Single>("single"), payloadCase<ByCase>("byCase"));
    }
    bool operator==(const WireFlowRouting&) const;
};

// One step of a flow, with everything that follows it.
struct WireFlowDestination {
    struct End {
        std::string caseName;
        bool carriesOutput;
        static constexpr auto keys() {
            return std::tuple(required("caseName", &End::caseName),
                              required("carriesOutput", &End::carriesOutput));
        }
        bool operator==(const End&) const = default;
    };
    struct Agent {
        WireAgentSpec spec;
        WireFlowRouting next;
        static constexpr auto keys() {
            return std::tuple(required("_0", &Agent::spec), required("next", &Agent::next));
        }
        bool operator==(const Agent&) const = default;
    };
    struct Branch {
        std::string field;
        WireBranchOperator operation = WireBranchOperator::equals;
        std::string value;
        Deep<WireFlowDestination> then;
        Deep<WireFlowDestination> otherwise;
        static constexpr auto keys() {
            return std::tuple(required("field", &Branch::field),
                              required("operator", &Branch::operation),
                              required("value", &Branch::value), required("then", &Branch::then),
                              required("otherwise", &Branch::otherwise));
        }
        bool operator==(const Branch&) const;
    };
    struct Tool {
        WireToolSpec spec;
        Deep<WireFlowDestination> next;
        static constexpr auto keys() {
            return std::tuple(required("_0", &Tool::spec), required("next", &Tool::next));
        }
        bool operator==(const Tool&) const;
    };

    std::variant<End, Agent, Branch, Tool> value;

    static constexpr auto cases() {
        return std::tuple(payloadCase<End>("end"), payloadCase<Agent>("agent"),
                          payloadCase<Branch>("branch"), payloadCase<Tool>("tool"));
    }
    bool operator==(const WireFlowDestination&) const;
};

} // namespace ombrel
