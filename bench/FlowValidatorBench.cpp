// FlowValidatorBench FLOW.json ROUNDS: validates a flow (the record as `ombrel flow show --json`
// prints it; every agent that it names gives an object with a text "x") and prints, as one JSON
// object, the seconds of the fastest and of the median validation, the number of issues, and by id
// the nodes that are unreachable and those with several connections into them.
#include "core/JsonDecoder.h"
#include "core/JsonEncoder.h"
#include "flows/FlowValidator.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace ombrel;

struct Measured {
    double fastest = 0;
    double median = 0;
    std::int64_t issues = 0;
    std::set<Uuid> unreachable;
    std::set<Uuid> merging;

    static constexpr auto keys() {
        return std::tuple(
            required("fastest", &Measured::fastest), required("median", &Measured::median),
            required("issues", &Measured::issues), required("unreachable", &Measured::unreachable),
            required("merging", &Measured::merging));
    }
};

std::vector<Agent> agentsOf(const Flow& flow) {
    std::vector<Agent> agents;
    for (const FlowNode& node : flow.nodes) {
        if (const auto* reference = std::get_if<FlowNodeKind::Agent>(&node.kind.value)) {
            agents.push_back(newAgent("Agent"));
            agents.back().id = reference->agentID;
            agents.back().output.value = AgentOutputKind::Object{
                {{Uuid::random(), "x", {PropertyKind::String{}}, std::nullopt, false}}};
        }
    }
    return agents;
}

} // namespace

int main(int argc, char** argv) {
    std::ifstream file(argc == 3 ? argv[1] : "", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const auto flow = decodeJson<Flow>(text);
    const int rounds = argc == 3 ? std::atoi(argv[2]) : 0;
    if (!flow || rounds < 1) {
        std::fprintf(stderr, "usage: FlowValidatorBench FLOW.json ROUNDS\n");
        return 2;
    }
    const std::vector<Agent> agents = agentsOf(*flow);
    std::vector<double> seconds;
    std::vector<FlowIssue> issues;
    for (int round = 0; round < rounds; ++round) {
        const auto start = std::chrono::steady_clock::now();
        issues = FlowValidator::validate(*flow, agents, {});
        seconds.push_back(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    std::ranges::sort(seconds);
    Measured measured{seconds.front(),
                      seconds[seconds.size() / 2],
                      static_cast<std::int64_t>(issues.size()),
                      {},
                      {}};
    for (const FlowIssue& issue : issues) {
        if (issue.message.ends_with("isn't reachable from Start.")) {
            measured.unreachable.insert(*issue.nodeID);
        } else if (issue.message.find("more than one incoming") != std::string::npos) {
            measured.merging.insert(*issue.nodeID);
        }
    }
    std::printf("%s\n", encodeJson(measured).c_str());
}
