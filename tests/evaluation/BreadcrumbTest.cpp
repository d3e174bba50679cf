#include "evaluation/Breadcrumb.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

using Pieces = std::vector<std::string_view>;

TEST(BreadcrumbsMatch, ComparesPartByPart) {
    EXPECT_TRUE(breadcrumbsMatch({"A", "B"}, {"A", "B"}));
    EXPECT_FALSE(breadcrumbsMatch({"A", "B"}, {"B", "A"}));
    EXPECT_FALSE(breadcrumbsMatch({"A > B"}, {"A", "B"}));
    EXPECT_FALSE(breadcrumbsMatch({"A "}, {"A"}));
}

TEST(BreadcrumbsMatch, DoesNotMatchAPrefix) {
    EXPECT_FALSE(breadcrumbsMatch({"A"}, {"A", "B"}));
    EXPECT_FALSE(breadcrumbsMatch({"A", "B"}, {"A"}));
    EXPECT_FALSE(breadcrumbsMatch({}, {"A"}));
}

TEST(BreadcrumbsMatch, CountsCase) {
    EXPECT_FALSE(breadcrumbsMatch({"Travel"}, {"travel"}));
}

TEST(BreadcrumbsMatch, ComparesByCanonicalEquivalence) {
    EXPECT_TRUE(breadcrumbsMatch({"caf\u00e9"}, {"cafe\u0301"}));
    EXPECT_FALSE(breadcrumbsMatch({"\ufb01"}, {"fi"}));
}

TEST(BreadcrumbsMatch, MatchesTwoEmptyOnes) {
    EXPECT_TRUE(breadcrumbsMatch({}, {}));
}

TEST(BreadcrumbPieces, LeavesEmptyPiecesOut) {
    EXPECT_EQ(breadcrumbPieces("A > B"), (Pieces{"A ", " B"}));
    EXPECT_EQ(breadcrumbPieces(">>A>"), (Pieces{"A"}));
    EXPECT_EQ(breadcrumbPieces(""), Pieces{});
    EXPECT_EQ(breadcrumbPieces(">"), Pieces{});
    EXPECT_EQ(breadcrumbPieces("> "), Pieces{" "});
}

TEST(BreadcrumbPieces, SplitsAtWholeCharactersOnly) {
    // With a combining mark it is another character.
    EXPECT_EQ(breadcrumbPieces("A>\u0338B>C"), (Pieces{"A>\u0338B", "C"}));
}

} // namespace
} // namespace ombrel
