#include "export/PackageName.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

TEST(PackageName, KeepsLettersMarksAndNumbersOnly) {
    EXPECT_EQ(packageName("My Docs"), "MyDocsRAG");
    EXPECT_EQ(packageName("a_b-c.d/e\\f\"g\nh"), "abcdefghRAG");
    EXPECT_EQ(packageName("Notes \xf0\x9f\x93\x9a 2"), "Notes2RAG");
}

TEST(PackageName, KeepsLettersOutsideAscii) {
    EXPECT_EQ(packageName("Café Notes"), "CaféNotesRAG");
    EXPECT_EQ(packageName("Cafe\u0301 Notes"), "Cafe\u0301NotesRAG");
    EXPECT_EQ(packageName("知識 ベース"), "知識ベースRAG");
}

TEST(PackageName, PutsALetterBeforeANumber) {
    EXPECT_EQ(packageName("2024 Notes"), "P2024NotesRAG");
    EXPECT_EQ(packageName(" ½ price"), "P½priceRAG");
    EXPECT_EQ(packageName("٣ notes"), "P٣notesRAG");
}

TEST(PackageName, TakesAChineseNumeralForANumber) {
    EXPECT_EQ(packageName("三国"), "P三国RAG");
    EXPECT_EQ(packageName("国三"), "国三RAG");
}

TEST(PackageName, IsProjectWhenNothingIsLeft) {
    EXPECT_EQ(packageName("!!!"), "ProjectRAG");
    EXPECT_EQ(packageName(""), "ProjectRAG");
    EXPECT_EQ(packageName("\xff\xfe"), "ProjectRAG");
}

} // namespace
} // namespace ombrel
