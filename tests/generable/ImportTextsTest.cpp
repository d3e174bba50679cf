#include "generable/ImportTexts.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

TEST(ImportTexts, NameTypesByWhatTheyAre) {
    ParsedType type;
    type.name = "Answer";
    EXPECT_EQ(typeChoiceText(type), "Answer (struct)");
    type.isGenerable = true;
    EXPECT_EQ(typeChoiceText(type), "Answer (@Generable struct)");
    type.kind = ParsedType::Kind::enumeration;
    EXPECT_EQ(typeChoiceText(type), "Answer (@Generable enum)");
    type.isGenerable = false;
    EXPECT_EQ(typeChoiceText(type), "Answer (enum)");
}

TEST(ImportTexts, CountWhatIsImported) {
    AgentOutputKind::Enumeration cases;
    EXPECT_EQ(previewHeading({cases}), "Enum \u00b7 0 cases");
    cases.cases.resize(1);
    EXPECT_EQ(previewHeading({cases}), "Enum \u00b7 1 case");
    AgentOutputKind::Object object;
    object.properties.resize(1);
    EXPECT_EQ(previewHeading({object}), "Object \u00b7 1 property");
    object.properties.resize(2);
    EXPECT_EQ(previewHeading({object}), "Object \u00b7 2 properties");
}

TEST(ImportTexts, CountWarnings) {
    EXPECT_EQ(warningsHeading(1), "1 WARNING");
    EXPECT_EQ(warningsHeading(2), "2 WARNINGS");
}

TEST(ImportTexts, NameTheFileThatCantBeRead) {
    EXPECT_EQ(unreadableFileText("Task.swift", "It is gone."),
              "Couldn't read Task.swift: It is gone.");
}

} // namespace
} // namespace ombrel
