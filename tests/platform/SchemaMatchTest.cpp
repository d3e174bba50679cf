#include "platform/SchemaMatch.h"

#include <gtest/gtest.h>
#include <memory>

namespace ombrel {
namespace {

using Schema = DynamicGenerationSchema;

std::shared_ptr<const Schema> shared(Schema schema) {
    return std::make_shared<const Schema>(std::move(schema));
}

Schema productSchema() {
    Schema::Object object;
    object.properties.push_back({"name", std::nullopt, shared({Schema::Scalar::string}), false});
    object.properties.push_back({"price", std::nullopt, shared({Schema::Scalar::number}), true});
    object.properties.push_back({"count", std::nullopt, shared({Schema::Scalar::integer}), true});
    object.properties.push_back({"isNew", std::nullopt, shared({Schema::Scalar::boolean}), true});
    object.properties.push_back(
        {"kind", std::nullopt, shared({Schema::AnyOf{"Kind", {"big", "small"}}}), true});
    return {object};
}

Schema listSchema() {
    return {Schema::ArrayOf{shared(productSchema()), 1, 2}};
}

std::optional<std::string> why(std::string_view json, const Schema& schema) {
    const auto content = GeneratedContent::parse(json);
    EXPECT_TRUE(content) << json;
    return whyNotFitting(*content, schema);
}

TEST(WhyNotFitting, AcceptsWhatFits) {
    const Schema product = productSchema();
    EXPECT_EQ(why(R"({"name":"a"})", product), std::nullopt);
    EXPECT_EQ(why(R"({"name":"a","price":1.5,"count":3,"isNew":true,"kind":"big"})", product),
              std::nullopt);
    EXPECT_EQ(why(R"({"name":"a","price":null,"other":[1]})", product), std::nullopt);
    EXPECT_EQ(why(R"({"name":"a","count":2.0})", product), std::nullopt);
    EXPECT_EQ(why(R"([{"name":"a"}])", listSchema()), std::nullopt);
}

TEST(WhyNotFitting, SaysWhatIsWrongAndWhere) {
    const Schema product = productSchema();
    EXPECT_EQ(why("3", product), "The answer is not an object");
    EXPECT_EQ(why("{}", product), "\"name\" is missing");
    EXPECT_EQ(why(R"({"name":null})", product), "\"name\" is not a string");
    EXPECT_EQ(why(R"({"name":"a","price":"1"})", product), "\"price\" is not a number");
    EXPECT_EQ(why(R"({"name":"a","count":1.5})", product), "\"count\" is not a whole number");
    EXPECT_EQ(why(R"({"name":"a","isNew":"yes"})", product), "\"isNew\" is not true or false");
    EXPECT_EQ(why(R"({"name":"a","kind":"Big"})", product), "\"kind\" is none of the choices");
    EXPECT_EQ(why(R"([{"name":"a"},{"name":1}])", listSchema()), "\"[1].name\" is not a string");
    EXPECT_EQ(why("[]", listSchema()), "The answer has too few elements");
    EXPECT_EQ(why(R"([{"name":"a"},{"name":"a"},{"name":"a"}])", listSchema()),
              "The answer has too many elements");
    EXPECT_EQ(why("{}", listSchema()), "The answer is not a list");
}

std::string found(std::string_view text, const Schema& schema) {
    const auto content = contentInText(text, schema);
    return content ? content->text() : content.error().message;
}

TEST(ContentInText, TakesTheWholeText) {
    EXPECT_EQ(found(" {\"name\": \"a\"}\n", productSchema()), R"({"name":"a"})");
    EXPECT_EQ(found("\"big\"", {Schema::AnyOf{"Kind", {"big"}}}), "\"big\"");
}

TEST(ContentInText, FindsJsonBetweenWordsAndInFencedCode) {
    EXPECT_EQ(
        found("Here you are:\n```json\n{\"name\": \"a } b\"}\n```\nEnjoy {it}.", productSchema()),
        R"({"name":"a } b"})");
    EXPECT_EQ(found("I think [1] that {\"x\": {\"name\": \"inner\"}} or rather {\"name\":\"b\"}",
                    productSchema()),
              R"({"name":"b"})");
    EXPECT_EQ(found("[{\"name\":\"a\"}] is it", listSchema()), R"([{"name":"a"}])");
}

TEST(ContentInText, TakesPlainTextWhereTextIsAskedFor) {
    EXPECT_EQ(found("big\n", {Schema::AnyOf{"Kind", {"big", "small"}}}), "\"big\"");
    EXPECT_EQ(found("plain", {Schema::Scalar::string}), "\"plain\"");
}

TEST(ContentInText, SaysWhyThereIsNone) {
    EXPECT_EQ(found("no idea", productSchema()), "The answer holds no JSON.");
    EXPECT_EQ(found("{\"name\": \"cut o", productSchema()), "The answer holds no JSON.");
    EXPECT_EQ(found("so: {\"nam\": 1}", productSchema()), "\"name\" is missing.");
    EXPECT_EQ(found("huge", {Schema::AnyOf{"Kind", {"big"}}}),
              "The answer is none of the choices.");
    EXPECT_EQ(found(std::string(100000, '['), productSchema()), "The answer holds no JSON.");
}

TEST(WhyNotFitting, ReadsInvalidBytesOfNamesAndChoicesAsTheyAreWritten) {
    const Schema::Object object{
        "o", {{"\xff", std::nullopt, shared({Schema::AnyOf{"c", {"\xfe"}}}), false}}};
    EXPECT_EQ(why("{\"\ufffd\":\"\ufffd\"}", {object}), std::nullopt);
}

std::string json(std::string_view text, const Schema& schema) {
    const auto content = jsonInText(text, schema);
    return content ? content->text() : "none";
}

TEST(JsonInText, GivesTheWholeTextWhateverItIs) {
    EXPECT_EQ(json(" {\"x\": 1}\n", productSchema()), R"({"x":1})");
    EXPECT_EQ(json("[1]", productSchema()), "[1]");
    EXPECT_EQ(json("\"huge\"", {Schema::AnyOf{"Kind", {"big"}}}), "\"huge\"");
}

TEST(JsonInText, GivesTheFirstObjectOrForAListTheFirstArray) {
    EXPECT_EQ(json("I think [1] that {\"x\": [2]} or {\"name\":\"b\"}", productSchema()),
              R"({"x":[2]})");
    EXPECT_EQ(json("of {\"x\": 1}, that is [3]", listSchema()), "[3]");
    EXPECT_EQ(json("{broken} {\"x\":1}", productSchema()), R"({"x":1})");
}

TEST(JsonInText, GivesNothingForTextAndForHalfAnObject) {
    EXPECT_EQ(json("no idea", productSchema()), "none");
    EXPECT_EQ(json("{\"name\": \"cut o", productSchema()), "none");
    EXPECT_EQ(json("huge", {Schema::AnyOf{"Kind", {"big"}}}), "none");
}

std::string withoutAbsentText(std::string_view text, const Schema& schema) {
    return withoutAbsent(*GeneratedContent::parse(text), schema).text();
}

TEST(WithoutAbsent, LeavesNullOutWhereAPropertyIsOptional) {
    EXPECT_EQ(withoutAbsentText(R"({"price":null,"name":"a","count":null,"isNew":true})",
                                productSchema()),
              R"({"name":"a","isNew":true})");
    EXPECT_EQ(withoutAbsentText(R"([{"name":"a","kind":null},{"name":"b"}])", listSchema()),
              R"([{"name":"a"},{"name":"b"}])");
    const Schema::Object outer{"o", {{"inner", std::nullopt, shared(productSchema()), true}}};
    EXPECT_EQ(withoutAbsentText(R"({"inner":{"name":"a","price":null}})", {outer}),
              R"({"inner":{"name":"a"}})");
}

TEST(WithoutAbsent, KeepsEverythingElse) {
    EXPECT_EQ(withoutAbsentText(R"({"name":null,"other":null})", productSchema()),
              R"({"name":null,"other":null})");
    EXPECT_EQ(withoutAbsentText("null", productSchema()), "null");
    EXPECT_EQ(withoutAbsentText(R"({"a":null})", listSchema()), R"({"a":null})");
}

} // namespace
} // namespace ombrel
