#include "knowledge/BuildTexts.h"

#include "tests/core/Workspace.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

class BuildTexts : public testing::Test {
  protected:
    // A build that ended ten minutes before `now`.
    void build() {
        auto project = state->project.edit();
        project->lastBuildFinishedAt = Date{now.secondsSinceReference - 600};
        project->lastBuiltDescription = "Build Succeeded";
        project->lastBuiltSettings = state->currentVariant().settings;
    }
    template <class Change>
    void setSettings(Change change) {
        Variant variant = state->currentVariant();
        change(variant.settings);
        state->updateVariant(variant);
    }
    std::string status() const { return buildStatusText(*state, now); }

    Date now{1'000'000};
    test::Workspace workspace;
    std::shared_ptr<AppState> state = workspace.state;
};

TEST_F(BuildTexts, SayThatANewProjectIsNotBuiltAndStale) {
    EXPECT_EQ(status(), "Not built yet");
    EXPECT_EQ(buildButtonHelp(*state),
              "Settings changed since the last build \u2014 click to rebuild (\u2318B)");
}

TEST_F(BuildTexts, SayWhenABuildSucceeded) {
    build();
    EXPECT_EQ(status(), "Build Succeeded \u00b7 10 minutes ago");
    EXPECT_EQ(buildButtonHelp(*state),
              "Build \u2014 re-chunk sources and apply enrichment (\u2318B)");
}

TEST_F(BuildTexts, SaySinceWhenTheSettingsDiffer) {
    build();
    setSettings([](BuildSettings& settings) { settings.topK = 3; });
    EXPECT_EQ(status(), "Build Succeeded \u00b7 10 minutes ago");
    setSettings([](BuildSettings& settings) { settings.targetChunkSize = 401; });
    EXPECT_EQ(status(), "settings changed since 10 minutes ago");
    EXPECT_EQ(buildButtonHelp(*state),
              "Settings changed since the last build \u2014 click to rebuild (\u2318B)");
}

TEST_F(BuildTexts, SayHowFarARunningStepIs) {
    build();
    state->editCurrentIndex()->embedProgress = Progress{32, 100};
    EXPECT_EQ(status(), "Embedding chunks \u2014 32 of 100");
    state->editCurrentIndex()->importProgress = Progress{1, 5};
    EXPECT_EQ(status(), "Reading files \u2014 1 of 5");
    {
        auto index = state->editCurrentIndex();
        index->isEnriching = true;
        index->enrichProgress = Progress{3, 12};
    }
    EXPECT_EQ(status(), "Enriching chunks \u2014 3 of 12");
}

TEST(RelativeDate, RoundsDownToTheLargestUnit) {
    const auto ago = [](double seconds) { return relativeDate(Date{1000}, Date{1000 + seconds}); };
    EXPECT_EQ(ago(-5), "just now");
    EXPECT_EQ(ago(59.9), "just now");
    EXPECT_EQ(ago(60), "1 minute ago");
    EXPECT_EQ(ago(3599), "59 minutes ago");
    EXPECT_EQ(ago(3600), "1 hour ago");
    EXPECT_EQ(ago(2 * 86400), "2 days ago");
    EXPECT_EQ(ago(45.0 * 86400), "1 month ago");
    EXPECT_EQ(ago(800.0 * 86400), "2 years ago");
}

TEST(RelativeDate, BearsAnyDate) {
    EXPECT_FALSE(relativeDate(Date{-1e300}, Date{1e300}).empty());
    EXPECT_EQ(relativeDate(Date{std::numeric_limits<double>::quiet_NaN()}, Date{0}), "just now");
}

} // namespace
} // namespace ombrel
