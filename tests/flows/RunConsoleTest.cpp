#include "flows/RunConsole.h"

#include "tests/core/Workspace.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ombrel {
namespace {

using Kind = FlowConsoleLine::Kind;

std::vector<FlowConsoleLine> lines(int count, const std::string& text = "x") {
    std::vector<FlowConsoleLine> made;
    for (int i = 1; i <= count; ++i) {
        made.push_back({Uuid::random(), text + std::to_string(i), Kind::output});
    }
    return made;
}

TEST(RunConsole, ReadsStepsFailuresAndOutput) {
    const auto expect = [](const char* text, Kind kind, const char* kept) {
        const FlowConsoleLine line = readConsoleLine(text);
        EXPECT_EQ(line.kind, kind) << text;
        EXPECT_EQ(line.text, kept) << text;
    };
    expect("▸ Compiling", Kind::step, "Compiling");
    expect("✗ It broke", Kind::failure, "It broke");
    expect("  warning", Kind::output, "  warning");
    expect("▸Compiling", Kind::output, "▸Compiling");
    expect(" ▸ Compiling", Kind::output, " ▸ Compiling");
    expect("▸ ", Kind::step, "");
    expect("", Kind::output, "");
}

TEST(RunConsole, KeepsFourThousandLines) {
    const test::Workspace workspace;
    appendToConsole(*workspace.state, lines(4000));
    EXPECT_EQ(workspace->flowConsoleLines->size(), 4000U);
}

TEST(RunConsole, IsCutToThreeThousandFiveHundredByTheNextLine) {
    const test::Workspace workspace;
    appendToConsole(*workspace.state, lines(4000));
    appendToConsole(*workspace.state, lines(1, "last"));
    EXPECT_EQ(workspace->flowConsoleLines->size(), 3500U);
    EXPECT_EQ(workspace->flowConsoleLines->front().text, "x502");
    EXPECT_EQ(workspace->flowConsoleLines->back().text, "last1");
}

TEST(RunConsole, IsCutAtTheSameLinesWhateverComesTogether) {
    const test::Workspace together;
    const test::Workspace apart;
    appendToConsole(*together.state, lines(9000));
    for (FlowConsoleLine& line : lines(9000)) {
        appendToConsole(*apart.state, {std::move(line)});
    }
    ASSERT_EQ(together->flowConsoleLines->size(), apart->flowConsoleLines->size());
    EXPECT_EQ(together->flowConsoleLines->front().text, apart->flowConsoleLines->front().text);
}

TEST(RunConsole, TellsItsObserversOnceOfLinesThatComeTogether) {
    const test::Workspace workspace;
    int changes = 0;
    const auto subscription = workspace->flowConsoleLines.observe([&] { ++changes; });
    appendToConsole(*workspace.state, lines(9000));
    EXPECT_EQ(changes, 1);
    appendToConsole(*workspace.state, {});
    EXPECT_EQ(changes, 1);
}

TEST(RunConsole, DropsTheOldestOfLinesThatAreTooLongTogether) {
    const test::Workspace workspace;
    appendToConsole(*workspace.state, lines(20, std::string(std::size_t{1} << 20, 'x')));
    EXPECT_EQ(workspace->flowConsoleLines->size(), 15U);
    EXPECT_TRUE(workspace->flowConsoleLines->back().text.ends_with("x20"));
}

TEST(RunConsole, KeepsTheNewestLineHoweverLongItIs) {
    const test::Workspace workspace;
    appendToConsole(*workspace.state, lines(2, std::string(std::size_t{20} << 20, 'x')));
    ASSERT_EQ(workspace->flowConsoleLines->size(), 1U);
    EXPECT_TRUE(workspace->flowConsoleLines->back().text.ends_with("x2"));
}

} // namespace
} // namespace ombrel
