#include "core/JsonDecoder.h"
#include "core/JsonEncoder.h"
#include "flows/WireFlowRunRequest.h"
#include "flows/WireProjectExportRequest.h"
#include "tests/flows/FlowSamples.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using Destination = WireFlowDestination;

Destination end(std::string caseName, bool carriesOutput) {
    return {Destination::End{std::move(caseName), carriesOutput}};
}

WireRAGChunk chunk(std::optional<SharedReals> embedding) {
    return {*Uuid::parse("00000000-0000-4000-8000-00000000000a"), "A > B", "search", "pack",
            std::move(embedding)};
}

// A spec that goes through every kind of destination and routing.
WireFlowSpec wholeSpec() {
    WireAgentSpec agent;
    agent.name = "Router";
    agent.instructions = "Route \"it\".\n";
    agent.input = {test::property("text", PropertyKind::String{})};
    agent.output = test::enumeration({"a", "b"});
    agent.contextFields = {"history"};
    agent.ragAttachments = {
        {WireRAGIndexKind::hybrid, 3, 0.5, {chunk(std::vector{0.1, -2.0}), chunk({})}}};
    const Destination tool{Destination::Tool{{"status", "{\"a\":1}"}, end("sent", true)}};
    const Destination branch{
        Destination::Branch{"amount", WireBranchOperator::isEmpty, "", tool, end("small", false)}};
    const Destination second{Destination::Agent{{"Reader", "", {}, test::object({}), {}, {}},
                                                {WireFlowRouting::Single{branch}}}};
    return {"Support",
            FlowKind::conversational,
            6,
            2000,
            {test::property("request", PropertyKind::String{})},
            {},
            agent,
            {WireFlowRouting::ByCase{{{"a", second}, {"b", end("b", false)}}}}};
}

WireFlowSpec smallSpec(WireFlowRouting routing) {
    WireFlowSpec spec;
    spec.name = "F";
    spec.maxHops = 6;
    spec.maxHistoryTokens = 2000;
    spec.firstAgent.name = "A";
    spec.routing = std::move(routing);
    return spec;
}

std::string withRouting(const std::string& routing) {
    return R"({"name":"F","kind":"Single-shot","maxHops":6,"maxHistoryTokens":2000,)"
           R"("startInput":[],"contextFields":[],"firstAgent":{"name":"A","instructions":"",)"
           R"("input":[],"output":{"text":{}},"contextFields":[],"ragAttachments":[]},)"
           R"("routing":)" +
           routing + "}";
}

TEST(Wire, WritesTheKeysOfEveryDestination) {
    EXPECT_EQ(encodeJson(smallSpec({WireFlowRouting::Single{end("x", true)}})),
              withRouting(R"({"single":{"_0":{"end":{"caseName":"x","carriesOutput":true}}}})"));
    const std::string endA = R"({"end":{"caseName":"a","carriesOutput":false}})";
    const std::string endB = R"({"end":{"caseName":"b","carriesOutput":true}})";
    const Destination tool{Destination::Tool{{"t", "{}"}, end("a", false)}};
    const Destination branch{
        Destination::Branch{"f", WireBranchOperator::greaterThan, "1", tool, end("b", true)}};
    const Destination agent{Destination::Agent{
        {"B", "", {}, {}, {}, {}},
        {WireFlowRouting::ByCase{{{"a", end("a", false)}, {"b", end("b", true)}}}}}};
    EXPECT_EQ(encodeJson(smallSpec({WireFlowRouting::Single{branch}})),
              withRouting(
                  R"({"single":{"_0":{"branch":{"field":"f","operator":"greaterThan","value":"1",)"
                  R"("then":{"tool":{"_0":{"name":"t","mockResponseJSON":"{}"},"next":)" +
                  endA + R"(}},"otherwise":)" + endB + "}}}}"));
    EXPECT_EQ(
        encodeJson(smallSpec({WireFlowRouting::Single{agent}})),
        withRouting(R"({"single":{"_0":{"agent":{"_0":{"name":"B","instructions":"","input":[],)"
                    R"("output":{"text":{}},"contextFields":[],"ragAttachments":[]},)"
                    R"("next":{"byCase":{"_0":{"a":)" +
                    endA + R"(,"b":)" + endB + "}}}}}}}"));
}

TEST(Wire, WritesAnEmptyMapForNoCases) {
    EXPECT_EQ(encodeJson(smallSpec({WireFlowRouting::ByCase{}})),
              withRouting(R"({"byCase":{"_0":{}}})"));
}

TEST(Wire, WritesAnEndForACaseThatIsNotConnected) {
    EXPECT_EQ(
        encodeJson(smallSpec({WireFlowRouting::ByCase{{{"x", end("x", false)}}}})),
        withRouting(R"({"byCase":{"_0":{"x":{"end":{"caseName":"x","carriesOutput":false}}}}})"));
}

TEST(Wire, LeavesOutTheKeyOfAnAbsentEmbedding) {
    EXPECT_EQ(encodeJson(chunk({})),
              R"({"id":"00000000-0000-4000-8000-00000000000A","breadcrumb":"A > B",)"
              R"("searchableText":"search","packableText":"pack"})");
    EXPECT_EQ(encodeJson(WireRAGAttachment{
                  WireRAGIndexKind::keyword, 5, 0.25, {chunk(std::vector{1.5, -0.0})}}),
              R"({"indexKind":"keyword","topK":5,"threshold":0.25,"chunks":[)"
              R"({"id":"00000000-0000-4000-8000-00000000000A","breadcrumb":"A > B",)"
              R"("searchableText":"search","packableText":"pack","embedding":[1.5,-0.0]}]})");
    for (const auto& embedding :
         {std::optional<SharedReals>(), std::optional<SharedReals>(std::vector<double>{})}) {
        const auto read = decodeJson<WireRAGChunk>(encodeJson(chunk(embedding)));
        ASSERT_TRUE(read);
        EXPECT_EQ(read->embedding.has_value(), embedding.has_value());
        EXPECT_EQ(*read, chunk(embedding));
    }
}

TEST(Wire, ReadsBackWhatItWrote) {
    const WireFlowSpec spec = wholeSpec();
    const auto read = decodeJson<WireFlowSpec>(encodeJson(spec));
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(*read, spec);
    WireFlowSpec other = spec;
    other.routing = smallSpec({WireFlowRouting::ByCase{}}).routing;
    EXPECT_NE(*read, other);
}

TEST(Wire, TellsFlowsApartThatDifferOnlyFarDown) {
    const auto row = [](bool carriesOutput) {
        Destination last = end("x", carriesOutput);
        for (int i = 0; i < 100; ++i) {
            last = {Destination::Tool{{"t", "{}"}, last}};
        }
        return smallSpec({WireFlowRouting::Single{last}});
    };
    EXPECT_EQ(row(true), row(true));
    EXPECT_NE(row(true), row(false));
}

TEST(Wire, ReadsKeysInAnyOrder) {
    const auto read = decodeJson<WireFlowSpec>(
        R"({"routing":{"single":{"_0":{"tool":{"next":{"end":{"carriesOutput":true,)"
        R"("caseName":"x"}},"_0":{"mockResponseJSON":"1","name":"t"}}}}},"more":1,)" +
        withRouting("null").substr(1, withRouting("null").find(R"(,"routing")") - 1) + "}");
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(read->routing, (WireFlowRouting{WireFlowRouting::Single{
                                 {{Destination::Tool{{"t", "1"}, end("x", true)}}}}}));
}

TEST(Wire, WritesARunRequest) {
    const WireFlowRunRequest request{wholeSpec(), "/runtime", "/builds/x", "{\"request\":\"hi\"}"};
    const std::string json = encodeJson(request);
    EXPECT_EQ(json, R"({"flow":)" + encodeJson(request.flow) +
                        R"(,"runtimePath":"/runtime","packageDirectory":"/builds/x",)"
                        R"("inputJSON":"{\"request\":\"hi\"}"})");
    const auto read = decodeJson<WireFlowRunRequest>(json);
    ASSERT_TRUE(read);
    EXPECT_EQ(*read, request);
}

TEST(Wire, WritesAnExportRequestOfSeveralFlows) {
    const WireProjectExportRequest request{
        {wholeSpec(), smallSpec({WireFlowRouting::ByCase{}}), wholeSpec()}, "Flows", "/out", "/rt"};
    const std::string json = encodeJson(request);
    EXPECT_EQ(json, R"({"flows":[)" + encodeJson(request.flows[0]) + "," +
                        encodeJson(request.flows[1]) + "," + encodeJson(request.flows[2]) +
                        R"(],"packageName":"Flows","destinationDirectory":"/out",)"
                        R"("runtimeSourcePath":"/rt"})");
    const auto read = decodeJson<WireProjectExportRequest>(json);
    ASSERT_TRUE(read);
    EXPECT_EQ(*read, request);
}

std::string errorOf(const std::string& routing) {
    const auto read = decodeJson<WireFlowSpec>(withRouting(routing));
    return read ? "" : read.error().message;
}

TEST(Wire, RefusesAPayloadOfOtherThanOneKey) {
    EXPECT_EQ(errorOf("{}"), "routing: Invalid number of keys found, expected one.");
    EXPECT_EQ(
        errorOf(R"({"single":{"_0":{"end":{"caseName":"x","carriesOutput":true},"tool":{}}}})"),
        "routing.single._0: Invalid number of keys found, expected one.");
    EXPECT_EQ(errorOf(R"({"byCase":{"_0":{"x":{}}}})"),
              "routing.byCase._0.x: Invalid number of keys found, expected one.");
}

TEST(Wire, TellsWhereSomethingDeepIsWrong) {
    const std::string ok = R"({"end":{"caseName":"x","carriesOutput":true}})";
    const std::string tool = R"({"tool":{"_0":{"name":"t","mockResponseJSON":""},"next":)";
    const std::string bad = R"({"end":{"caseName":"x","carriesOutput":1}})";
    const std::string branch = R"({"branch":{"field":"f","operator":"equals","value":"","then":)";
    EXPECT_EQ(errorOf(R"({"byCase":{"_0":{"a":)" + tool + ok + R"(}},"b":)" + tool + branch + ok +
                      R"(,"otherwise":)" + tool + bad + R"(}}}}}},"c":)" + ok + "}}}"),
              "routing.byCase._0.b.tool.next.branch.otherwise.tool.next.end.carriesOutput: "
              "expected true or false, found a whole number");
    EXPECT_EQ(errorOf(R"({"byCase":{"_0":{"a":)" + tool + bad + R"(}},"b":)" + ok + "}}}"),
              "routing.byCase._0.a.tool.next.end.carriesOutput: "
              "expected true or false, found a whole number");
}

TEST(Wire, RefusesAMissingKey) {
    EXPECT_EQ(errorOf(R"({"single":{}})"), "routing.single._0: the key is missing");
    EXPECT_EQ(errorOf(R"({"single":{"_0":null}})"),
              "routing.single._0: expected an object, found null");
}

TEST(Wire, StopsWritingWhenTheSinkRefuses) {
    int calls = 0;
    JsonWriter writer([&](std::string_view) {
        ++calls;
        return false;
    });
    EXPECT_TRUE(encode(writer, wholeSpec()));
    EXPECT_FALSE(writer.finish());
    EXPECT_EQ(calls, 1);
}

TEST(Wire, SaysWhenAFieldIsNestedTooDeeply) {
    WireFlowSpec spec = smallSpec({WireFlowRouting::Single{end("x", true)}});
    PropertyKind kind{PropertyKind::String{}};
    for (int i = 0; i < 1000; ++i) {
        PropertyKind outer;
        outer.value = PropertyKind::Array{std::move(kind)};
        kind = std::move(outer);
    }
    spec.startInput = {test::property("deep", kind.value)};
    JsonWriter writer([](std::string_view) { return true; });
    EXPECT_FALSE(encode(writer, spec));
}

} // namespace
} // namespace ombrel
