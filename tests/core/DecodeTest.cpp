#include "core/Decode.h"

#include "core/Agent.h"
#include "core/BuildSettings.h"
#include "core/Flow.h"
#include "core/JsonDecoder.h"
#include "core/JsonEncoder.h"
#include "core/NavigatorSelection.h"
#include "core/PersistedProject.h"
#include "core/PlaygroundResult.h"
#include "platform/PropertyListReader.h"
#include "platform/PropertyListWriter.h"
#include "tests/core/SampleProject.h"
#include "tests/support/PropertyListBuilder.h"
#include "tests/support/PropertyListOfJson.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace ombrel {
namespace {

using test::PropertyListBuilder;

template <class T>
std::string propertyListOf(const T& value) {
    PropertyListCounter counter;
    EXPECT_TRUE(encode(counter, value));
    std::string bytes;
    PropertyListWriter writer(
        [&bytes](std::string_view piece) {
            bytes += piece;
            return true;
        },
        counter.objects());
    EXPECT_TRUE(encode(writer, value));
    EXPECT_TRUE(writer.finish());
    return bytes;
}

template <class T>
Result<T> decodePropertyList(const std::string& bytes, UnknownKeys* unknownKeys = nullptr) {
    auto reader = PropertyListReader::open(PropertyListBytes(bytes));
    if (!reader) {
        return tl::unexpected(reader.error());
    }
    Decoder<PropertyListReader> decoder(*reader);
    T value{};
    if (!decoder.decode(reader->top(), value)) {
        return failure(decoder.error().text());
    }
    if (unknownKeys) {
        *unknownKeys = decoder.unknownKeys();
    }
    return value;
}

// Both forms of a value read back as the value.
template <class T>
void expectReadsBack(const T& value) {
    const auto fromPropertyList = decodePropertyList<T>(propertyListOf(value));
    ASSERT_TRUE(fromPropertyList) << fromPropertyList.error().message;
    EXPECT_EQ(*fromPropertyList, value);
    const auto fromJson = decodeJson<T>(encodeJson(value));
    ASSERT_TRUE(fromJson) << fromJson.error().message;
    EXPECT_EQ(*fromJson, value);
}

// What is wrong with a value that is written down as JSON, in both forms the same.
template <class T>
std::string problemOf(const std::string& json) {
    const auto fromJson = decodeJson<T>(json);
    const auto fromPropertyList = decodePropertyList<T>(test::propertyListOfJson(json));
    EXPECT_EQ(fromJson.has_value(), fromPropertyList.has_value()) << json;
    if (fromJson || fromPropertyList) {
        return "";
    }
    const auto path = [](const std::string& message) {
        const std::size_t end = message.find(": ");
        return end == std::string::npos ? "" : message.substr(0, end);
    };
    EXPECT_EQ(path(fromPropertyList.error().message), path(fromJson.error().message));
    return fromJson.error().message;
}

const std::string anID = "\"E621E1F8-C36C-495A-93FC-0C247A3E6E5F\"";

TEST(Decode, ReadsBackEveryRecord) {
    const PersistedProject project = test::sampleProject();
    expectReadsBack(project);
    expectReadsBack(project.project);
    expectReadsBack(project.agents);
    expectReadsBack(project.flows);
    expectReadsBack(project.selectedNavigatorItem);
    PlaygroundResult result;
    result.question = "?";
    result.retrieved = {{test::sampleID(1), 1, {"a", "b"}, "snippet", 0.5, 1, 0.25, true, false}};
    result.answerBreakdown = AnswerBreakdown{1, 2, 3, 4, 5};
    expectReadsBack(result);
}

TEST(Decode, ReadsBackEveryCaseOfEveryEnumeration) {
    for (const auto& entry : rawValues(ChunkingStrategy{})) {
        expectReadsBack(entry.value);
    }
    for (const auto& entry : rawValues(IndexKind{})) {
        expectReadsBack(entry.value);
    }
    for (const auto& entry : rawValues(QueryTransform{})) {
        expectReadsBack(entry.value);
    }
    for (const auto& entry : rawValues(WireBranchOperator{})) {
        expectReadsBack(entry.value);
    }
    expectReadsBack(SourceStatus{SourceStatus::Ready{}});
    expectReadsBack(SourceStatus{SourceStatus::EmptyPage{3}});
    expectReadsBack(NavigatorSelection{NavigatorSelection::Rag{test::sampleID(1)}});
    expectReadsBack(NavigatorSelection{NavigatorSelection::Agent{test::sampleID(1)}});
    expectReadsBack(NavigatorSelection{NavigatorSelection::Tool{test::sampleID(1)}});
}

TEST(Decode, ReadsBackNumbersAtTheirLimits) {
    using Integers = std::numeric_limits<std::int64_t>;
    expectReadsBack(std::vector<std::int64_t>{Integers::min(), -1, 0, Integers::max()});
    expectReadsBack(std::vector<double>{0.1, 1e308, 5e-324, HUGE_VAL, -HUGE_VAL, 1e22});
    const auto nan = decodeJson<double>(encodeJson(std::nan("")));
    ASSERT_TRUE(nan);
    EXPECT_TRUE(std::isnan(*nan));
    const auto negativeZero = decodeJson<double>(encodeJson(-0.0));
    ASSERT_TRUE(negativeZero);
    EXPECT_TRUE(std::signbit(*negativeZero));
}

TEST(Decode, TakesAnIntegerForARealAndAWholeRealForAnInteger) {
    EXPECT_EQ(decodePropertyList<double>(test::propertyListOfJson("7")), 7.0);
    EXPECT_EQ(decodePropertyList<std::int64_t>(test::propertyListOfJson("7.0")), 7);
    EXPECT_EQ(decodeJson<std::int64_t>("7.0"), 7);
    EXPECT_EQ(decodeJson<std::int64_t>("-9223372036854775808.0"),
              std::numeric_limits<std::int64_t>::min());
    const auto reals =
        decodePropertyList<std::vector<double>>(test::propertyListOfJson("[1, 2.5, 3, 4.5, 5.5]"));
    EXPECT_EQ(reals, (std::vector<double>{1, 2.5, 3, 4.5, 5.5}));
    const std::string whole = "expected a whole number of 64 bits";
    EXPECT_EQ(problemOf<std::int64_t>("7.5"), whole);
    EXPECT_EQ(problemOf<std::int64_t>("9223372036854775808.0"), whole);
    EXPECT_EQ(problemOf<std::int64_t>("-1e300"), whole);
}

TEST(Decode, ConvertsNothingElse) {
    EXPECT_EQ(problemOf<bool>("1"), "expected true or false, found a whole number");
    EXPECT_EQ(problemOf<std::int64_t>("true"), "expected a whole number, found true or false");
    EXPECT_EQ(problemOf<double>("\"1\""), "expected a number, found a string");
    EXPECT_EQ(problemOf<std::string>("1"), "expected a string, found a whole number");
    EXPECT_EQ(problemOf<std::vector<std::string>>("{}"), "expected an array, found an object");
    EXPECT_EQ(problemOf<BuildSettings>("[]"), "expected an object, found an array");
    EXPECT_EQ(problemOf<std::vector<double>>("[1, null]"), "[1]: expected a number, found null");
    EXPECT_EQ(decodePropertyList<Date>(test::propertyListOfJson("1.5")).error().message,
              "expected a date, found a real");
    EXPECT_EQ(decodePropertyList<Data>(test::propertyListOfJson("\"/w==\"")).error().message,
              "expected data, found a string");
    EXPECT_EQ(decodeJson<Data>("\"/w=\"").error().message, "expected data in base64");
}

TEST(Decode, TakesAnIDInEitherCaseAndWritesItInUpperCase) {
    const std::string lower = "\"e621e1f8-c36c-495a-93fc-0c247a3e6e5f\"";
    for (const auto& id :
         {decodeJson<Uuid>(lower), decodePropertyList<Uuid>(test::propertyListOfJson(lower))}) {
        ASSERT_TRUE(id);
        EXPECT_EQ(encodeJson(*id), anID);
    }
    EXPECT_EQ(problemOf<Uuid>("\"E621E1F8\""), "expected a UUID, found \"E621E1F8\"");
}

TEST(Decode, NamesThePathOfWhatIsWrong) {
    PersistedProject project = test::sampleProject();
    std::string json = encodeJson(project);
    const auto replace = [&json](const std::string& from, const std::string& to) {
        std::string changed = json;
        const std::size_t at = changed.rfind(from);
        EXPECT_NE(at, std::string::npos) << from;
        return changed.replace(at, from.size(), to);
    };
    EXPECT_EQ(decodeJson<PersistedProject>(replace("\"topK\":6", "\"topK\":\"6\"")).error().message,
              "ragIndexes[1].variants[0].settings.topK: expected a number, found a string");
    EXPECT_EQ(
        decodeJson<PersistedProject>(replace("Single-shot", "Twice")).error().message,
        "flows[1].kind: expected one of \"Single-shot\", \"Conversational\", found \"Twice\"");
    EXPECT_EQ(
        decodeJson<PersistedProject>(replace("\"a.b\":\"1\"", "\"a.b\":1")).error().message,
        "agents[0].evaluationCases[0].expectedObjectFields[\"a.b\"]: expected a string, found "
        "a whole number");
    EXPECT_EQ(
        decodeJson<PersistedProject>(replace("\"oversized\":{\"_0\"", "\"oversized\":{\"_1\""))
            .error()
            .message,
        "ragIndexes[0].sources[0].status.oversized._0: the key is missing");
}

TEST(Decode, FailsOnEveryMissingRequiredKey) {
    const std::string complete = encodeJson(BuildSettings());
    ASSERT_EQ(problemOf<BuildSettings>(complete), "");
    for (const char* key :
         {"chunking", "targetChunkSize", "overlapPercent", "index", "enrichments",
          "generatedQuestionsPerChunk", "transform", "rerank", "topK", "contextBudget"}) {
        std::string without = complete;
        without.replace(without.find("\"" + std::string(key) + "\""), 2, "\"_");
        EXPECT_EQ(problemOf<BuildSettings>(without), std::string(key) + ": the key is missing");
    }
}

TEST(Decode, TakesNullForAnAbsentOptional) {
    const std::string chunk = "{\"id\":" + anID +
                              ",\"index\":1,\"breadcrumb\":[],\"tokenCount\":0,\"text\":\"\","
                              "\"embedding\":null}";
    EXPECT_EQ(problemOf<DocumentChunk>(chunk), "");
    EXPECT_EQ(decodeJson<DocumentChunk>(chunk)->embedding, std::nullopt);
    EXPECT_EQ(problemOf<AgentEnumCase>("{\"id\":" + anID + ",\"name\":null}"),
              "name: expected a string, found null");
}

TEST(Decode, ListsTheKeysThatTheRecordDoesNotHave) {
    UnknownKeys unknown;
    const std::string json = R"([{"id":)" + anID + R"(,"name":"a","color":{"r":1}},{"id":)" + anID +
                             R"(,"name":"b","name":"c","a key":2}])";
    const auto cases =
        decodePropertyList<std::vector<AgentEnumCase>>(test::propertyListOfJson(json), &unknown);
    ASSERT_TRUE(cases);
    EXPECT_EQ((*cases)[1].name, "b");
    EXPECT_EQ(unknown.count, 3U);
    EXPECT_EQ(unknown.paths, (std::vector<std::string>{"[0].color", "[1].name", "[1][\"a key\"]"}));
}

TEST(Decode, BoundsTheListOfUnknownKeys) {
    std::string json = "{\"id\":" + anID + ",\"name\":\"a\"";
    for (int i = 0; i < 500; ++i) {
        json += ",\"k" + std::to_string(i) + "\":0";
    }
    UnknownKeys unknown;
    ASSERT_TRUE(decodePropertyList<AgentEnumCase>(test::propertyListOfJson(json + "}"), &unknown));
    EXPECT_EQ(unknown.count, 500U);
    EXPECT_EQ(unknown.paths.size(), UnknownKeys::longestList);
}

TEST(Decode, SharesNoOrderWithASet) {
    const auto members =
        decodeJson<std::set<Enrichment>>(R"(["Parent–child","Contextual notes","Parent–child"])");
    EXPECT_EQ(members, (std::set{Enrichment::contextualNotes, Enrichment::parentChild}));
}

TEST(Decode, TakesAMapWithIDsAsKeysFromAnArray) {
    using Map = std::map<Uuid, std::int64_t>;
    EXPECT_EQ(encodeJson(Map{{test::sampleID(1), 5}}),
              "[\"E621E1F8-C36C-495A-93FC-0C247A3E6E01\",5]");
    EXPECT_EQ(problemOf<Map>("[" + anID + "]"),
              "expected an even number of elements: key, value, key, value");
    EXPECT_EQ(problemOf<Map>("[1, 2]"), "[0]: expected a string, found a whole number");
    EXPECT_EQ(problemOf<Map>("[" + anID + ",\"x\"]"),
              "[1]: expected a whole number, found a string");
    EXPECT_EQ(decodeJson<Map>("[" + anID + ",1," + anID + ",2]")->begin()->second, 2);
}

TEST(DecodePayload, WantsExactlyOneKey) {
    EXPECT_EQ(problemOf<AgentOutputKind>(R"({"text":{},"object":{"_0":[]}})"),
              "Invalid number of keys found, expected one.");
    EXPECT_EQ(problemOf<AgentOutputKind>("{}"), "Invalid number of keys found, expected one.");
    EXPECT_EQ(problemOf<SourceStatus>(R"({"ready":{},"oversized":{"_0":1}})"),
              "Invalid number of keys found, expected one.");
    EXPECT_EQ(problemOf<NavigatorSelection>("{}"), "Invalid number of keys found, expected one.");
    EXPECT_EQ(problemOf<FlowNodeKind>(R"({"start":{},"end":{}})"),
              "Invalid number of keys found, expected one.");
    EXPECT_EQ(problemOf<std::vector<PropertyKind>>(R"([{"int":{}},{"int":{},"bool":{}}])"),
              "[1]: Invalid number of keys found, expected one.");
}

TEST(DecodePayload, RefusesAnUnknownCase) {
    EXPECT_EQ(problemOf<AgentOutputKind>(R"({"number":{}})"),
              "expected one of the keys \"text\", \"enumeration\", \"object\", found \"number\"");
}

TEST(DecodePayload, ReadsBackTextAndAnEmptyEnumeration) {
    const auto text = decodeJson<AgentOutputKind>(R"({"text":{}})");
    const auto enumeration = decodeJson<AgentOutputKind>(R"({"enumeration":{"_0":[]}})");
    ASSERT_TRUE(text && enumeration);
    EXPECT_EQ(*text, AgentOutputKind{AgentOutputKind::Text{}});
    EXPECT_EQ(*enumeration, AgentOutputKind{AgentOutputKind::Enumeration{}});
    EXPECT_EQ(encodeJson(*text), R"({"text":{}})");
    EXPECT_EQ(encodeJson(*enumeration), R"({"enumeration":{"_0":[]}})");
    expectReadsBack(*text);
    expectReadsBack(*enumeration);
}

TEST(DecodePayload, ReadsBackAnArrayOfArraysOfEnumeration) {
    const PropertyKind cases{PropertyKind::Enumeration{{{test::sampleID(1), "yes", std::nullopt}}}};
    const PropertyKind nested{PropertyKind::Array{PropertyKind{PropertyKind::Array{cases}}}};
    EXPECT_EQ(encodeJson(nested),
              R"({"array":{"_0":{"array":{"_0":{"enumeration":{"_0":[)"
              R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E01","name":"yes"}]}}}}}})");
    expectReadsBack(nested);
    EXPECT_EQ(decodeJson<PropertyKind>(encodeJson(nested))->typeLabel(), "[[Enum]]");
}

TEST(DecodeAgent, FillsInTheFieldsThatCameLaterAndNoOthers) {
    const std::string complete = R"({"id":)" + anID +
                                 R"(,"name":"a","summary":"","instructions":"","input":[],)"
                                 R"("output":{"text":{}},"toolIDs":[],"contextFieldNames":[]})";
    ASSERT_EQ(problemOf<Agent>(complete), "");
    const auto agent = decodeJson<Agent>(complete);
    EXPECT_TRUE(agent->ragAttachments.empty());
    EXPECT_TRUE(agent->evaluationCases.empty());
    EXPECT_NE(encodeJson(*agent).find("\"ragAttachments\":[],\"evaluationCases\":[]"),
              std::string::npos);
    for (const char* key :
         {"name", "summary", "instructions", "input", "output", "toolIDs", "contextFieldNames"}) {
        std::string without = complete;
        without.replace(without.find("\"" + std::string(key) + "\""), 2, "\"_");
        EXPECT_EQ(problemOf<Agent>(without), std::string(key) + ": the key is missing");
    }
}

TEST(DecodeAgent, FillsInAnEvaluationCase) {
    const auto evaluation =
        decodeJson<AgentEvaluationCase>(R"({"id":)" + anID + R"(,"input":"x"})");
    ASSERT_TRUE(evaluation);
    EXPECT_EQ(evaluation->expectedEnumCase, "");
    EXPECT_TRUE(evaluation->expectedObjectFields.empty());
    EXPECT_EQ(evaluation->lastOutput, std::nullopt);
    EXPECT_EQ(evaluation->lastPassed, std::nullopt);
}

TEST(DecodeAgent, WantsToKnowWhetherAPropertyIsOptional) {
    const std::string start = R"({"id":)" + anID + R"(,"name":"a","kind":{"int":{}})";
    EXPECT_EQ(problemOf<AgentProperty>(start + R"(,"isOptional":false})"), "");
    EXPECT_EQ(problemOf<AgentProperty>(start + R"(,"description":"d"})"),
              "isOptional: the key is missing");
}

TEST(DecodeFlow, FillsInTheHistoryBudgetAndNothingElse) {
    const std::string start = R"({"id":)" + anID + R"(,"name":"f","kind":"Single-shot",)";
    const std::string end = R"("startInput":[],"contextFields":[],"nodes":[],"edges":[]})";
    const auto flow = decodeJson<Flow>(start + R"("maxHops":3,)" + end);
    ASSERT_TRUE(flow);
    EXPECT_EQ(flow->maxHistoryTokens, 2000);
    EXPECT_NE(encodeJson(*flow).find("\"maxHistoryTokens\":2000"), std::string::npos);
    EXPECT_EQ(problemOf<Flow>(start + R"("maxHistoryTokens":1,)" + end),
              "maxHops: the key is missing");
}

TEST(DecodeFlow, RefusesAnyOtherKind) {
    for (const char* kind : {"single-shot", "singleShot", "Chat", ""}) {
        EXPECT_EQ(problemOf<FlowKind>("\"" + std::string(kind) + "\""),
                  "expected one of \"Single-shot\", \"Conversational\", found \"" +
                      std::string(kind) + "\"");
    }
}

TEST(DecodeFlow, ReadsBackAFlowOfOneStartNode) {
    Flow flow("One");
    expectReadsBack(flow);
    EXPECT_NE(encodeJson(flow).find("\"position\":[80,160]"), std::string::npos);
    EXPECT_EQ(problemOf<CanvasPoint>("[80]"), "expected 2 elements");
    EXPECT_EQ(problemOf<CanvasPoint>("[80,160,1]"), "expected 2 elements");
    EXPECT_EQ(problemOf<CanvasPoint>("[80,\"160\"]"), "[1]: expected a number, found a string");
}

std::string nestedKinds(int levels) {
    std::string json;
    for (int i = 0; i < levels; ++i) {
        json += R"({"array":{"_0":)";
    }
    json += R"({"int":{}})";
    for (int i = 0; i < levels; ++i) {
        json += "}}";
    }
    return json;
}

TEST(DecodeNesting, HasALimitThatKeepsTheStackSafe) {
    const int most = (maximumNesting - 2) / 2; // each level is two objects, as is the innermost
    EXPECT_EQ(problemOf<PropertyKind>(nestedKinds(most)), "");
    EXPECT_NE(problemOf<PropertyKind>(nestedKinds(most + 1)).find("nested too deeply"),
              std::string::npos);
    const auto veryDeep = decodeJson<PropertyKind>(nestedKinds(200'000));
    ASSERT_FALSE(veryDeep);
    EXPECT_TRUE(veryDeep.error().message.ends_with("nested too deeply"));
}

TEST(DecodeNesting, IsTheSameForWhatIsWritten) {
    PropertyKind kind{PropertyKind::Int{}};
    for (int i = 0; i < (maximumNesting - 2) / 2; ++i) {
        kind = PropertyKind{PropertyKind::Array{std::move(kind)}};
    }
    expectReadsBack(kind);
    kind = PropertyKind{PropertyKind::Array{std::move(kind)}};
    PropertyListCounter counter;
    EXPECT_FALSE(encode(counter, kind));
    EXPECT_FALSE(decodeJson<PropertyKind>(encodeJson(kind)));
}

// {"array":{"_0": itself}}
TEST(DecodeSharing, FindsAnObjectThatContainsItself) {
    PropertyListBuilder builder;
    const auto array = builder.ascii("array");
    const auto payload = builder.ascii("_0");
    const auto inner = builder.objects.size();
    const auto outer = inner + 1;
    builder.dictionary({payload}, {outer});
    builder.dictionary({array}, {inner});
    builder.top = outer;
    const auto kind = decodePropertyList<PropertyKind>(builder.bytes());
    ASSERT_FALSE(kind);
    EXPECT_EQ(kind.error().message, "array._0: contains itself");
}

TEST(DecodeSharing, TakesObjectsThatAreSharedWithinReason) {
    PropertyListBuilder builder;
    const auto text = builder.ascii(std::string(20'000, 'x'));
    builder.top = builder.array(std::vector<std::uint64_t>(1000, text));
    const auto strings = decodePropertyList<std::vector<std::string>>(builder.bytes());
    ASSERT_TRUE(strings) << strings.error().message;
    EXPECT_EQ(strings->size(), 1000U);
}

TEST(DecodeSharing, RefusesWhatExpandsEnormously) {
    const std::string enormous = "the value would take far more memory than the file has bytes";
    PropertyListBuilder strings;
    strings.offsetSize = 4;
    const auto text = strings.ascii(std::string(100'000, 'x'));
    strings.top = strings.array(std::vector<std::uint64_t>(50'000, text));
    const auto manyStrings = decodePropertyList<std::vector<std::string>>(strings.bytes());
    ASSERT_FALSE(manyStrings);
    EXPECT_TRUE(manyStrings.error().message.ends_with(enormous)) << manyStrings.error().message;

    // Ten objects that each have the next one a hundred times: 10^20 properties.
    PropertyListBuilder kinds;
    const auto id = kinds.ascii("E621E1F8-C36C-495A-93FC-0C247A3E6E5F");
    const auto no = kinds.add("\x08");
    const auto name = kinds.ascii("");
    const auto payload = kinds.ascii("_0");
    const auto object = kinds.ascii("object");
    const std::vector<std::uint64_t> keys = {kinds.ascii("id"), kinds.ascii("name"),
                                             kinds.ascii("kind"), kinds.ascii("isOptional")};
    auto kind = kinds.dictionary({kinds.ascii("int")}, {kinds.dictionary({}, {})});
    for (int level = 0; level < 10; ++level) {
        const auto property = kinds.dictionary(keys, {id, name, kind, no});
        const auto properties = kinds.array(std::vector<std::uint64_t>(100, property));
        kind = kinds.dictionary({object}, {kinds.dictionary({payload}, {properties})});
    }
    kinds.top = kind;
    const auto manyKinds = decodePropertyList<PropertyKind>(kinds.bytes());
    ASSERT_FALSE(manyKinds);
    EXPECT_TRUE(manyKinds.error().message.ends_with(enormous)) << manyKinds.error().message;
}

TEST(DecodeSharing, RefusesAnArrayWhoseRecordsWouldNotFitTheFile) {
    PropertyListBuilder builder; // millions of references to one chunk that lacks its keys
    const auto nothing = builder.dictionary({}, {});
    builder.top = builder.array(std::vector<std::uint64_t>(3'000'000, nothing));
    const auto chunks = decodePropertyList<std::vector<DocumentChunk>>(builder.bytes());
    ASSERT_FALSE(chunks);
    EXPECT_EQ(chunks.error().message,
              "the value would take far more memory than the file has bytes");
}

TEST(EncodeJson, LeavesAbsentOptionalsOut) {
    EXPECT_EQ(encodeJson(AgentEnumCase{test::sampleID(1), "a", std::nullopt}),
              R"({"id":"E621E1F8-C36C-495A-93FC-0C247A3E6E01","name":"a"})");
}

TEST(EncodeJson, WritesDatesAsSecondsAndDataAsBase64) {
    EXPECT_EQ(encodeJson(Date{785408400.25}), "785408400.25");
    EXPECT_EQ(encodeJson(Data{"\xFF\xFE"}), R"("//4=")");
    EXPECT_EQ(encodeJson(std::map<std::string, std::string>{{"b", "1"}, {"a", "2"}}),
              R"({"a":"2","b":"1"})");
}

} // namespace
} // namespace ombrel
