#include "flows/FlowExport.h"

#include "flows/FlowValidator.h"
#include "tests/flows/FlowWorkspace.h"
#include "tests/platform/Await.h"

#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>

namespace ombrel {
namespace {

// The flows of a workspace, exported by a script in the place of ExportCLI. $1 is the request.
struct Exporting : test::FlowWorkspace {
    Exporting() { setTool("echo EXPORT_SUCCEEDED"); }

    void setTool(const std::string& script) const { tools.setSwift("shift 4\n" + script); }
    ExportOutcome exportAll() const {
        FlowExport what;
        what.destination = tools.folder / "exported";
        what.name = "MyPackage";
        what.flows = *state->flows;
        what.agents = *state->agents;
        what.tools = *state->tools;
        what.ragIndexes = *state->ragIndexes;
        return test::await(executor, exportFlows(executor, std::move(what), toolChain));
    }
    // A flow with an error.
    void addBroken(std::string name) const {
        test::Drawing drawing;
        drawing.agent("Lost");
        add(std::move(drawing), std::move(name));
    }
    void breakAll() const {
        auto list = state->flows.edit();
        for (Flow& flow : *list) {
            flow.edges.clear();
        }
    }
};

TEST(FlowPackageName, KeepsLettersMarksAndNumbers) {
    EXPECT_EQ(FlowExport::packageName("My RAG 2!"), "MyRAG2");
    EXPECT_EQ(FlowExport::packageName("Über-Größe"), "ÜberGröße");
}

TEST(FlowPackageName, GetsALetterInFrontOfANumber) {
    EXPECT_EQ(FlowExport::packageName("2024 notes"), "P2024notes");
    EXPECT_EQ(FlowExport::packageName("½ price"), "P½price");
}

TEST(FlowPackageName, IsAnotherNameWhenNothingRemains) {
    EXPECT_EQ(FlowExport::packageName("---"), "OmbrelProject");
    EXPECT_EQ(FlowExport::packageName(""), "OmbrelProject");
}

TEST(ExportFlows, SucceedsWhenTheToolSaysSo) {
    const Exporting exporting;
    EXPECT_EQ(exporting.exportAll(),
              (ExportOutcome{true, "Export succeeded.", "EXPORT_SUCCEEDED\n"}));
}

TEST(ExportFlows, CallsTheToolWithARequestForTheUserAlone) {
    const Exporting exporting;
    const auto copy = exporting.tools.folder / "copy";
    exporting.draw("Second");
    exporting.setTool("cp -p \"$1\" " + copy.string() + "\necho EXPORT_SUCCEEDED");
    EXPECT_TRUE(exporting.exportAll().isSuccess);
    const std::string request = exporting.tools.folder / "tmp/OmbrelExportRequest-";
    const std::string calls = exporting.tools.swiftCalls();
    EXPECT_TRUE(calls.starts_with("run --package-path " + exporting.tools.core().string() +
                                  " ExportCLI " + request))
        << calls;
    EXPECT_TRUE(exporting.tools.temporaryFiles().empty());
    struct stat status {};
    ASSERT_EQ(stat(copy.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    const std::string text = test::contentsOf(copy);
    for (const std::string& part :
         {std::string(R"("name":"Support")"), std::string(R"("name":"Second")"),
          std::string(R"("packageName":"MyPackage")"),
          R"("destinationDirectory":")" + (exporting.tools.folder / "exported").string() + "\"",
          R"("runtimeSourcePath":")" + exporting.tools.runtime().string() + "\""}) {
        EXPECT_NE(text.find(part), std::string::npos) << part;
    }
    EXPECT_LT(text.find(R"("name":"Support")"), text.find(R"("name":"Second")"));
}

TEST(ExportFlows, LeavesFlowsWithErrorsOutAndNamesThem) {
    const Exporting exporting;
    exporting.addBroken("Broken");
    EXPECT_EQ(exporting.exportAll().message, "Export succeeded. (skipped, had errors: Broken)");
    exporting.addBroken("Too");
    EXPECT_EQ(exporting.exportAll().message,
              "Export succeeded. (skipped, had errors: Broken, Too)");
}

TEST(ExportFlows, StartsNothingWhenNoFlowIsReady) {
    const Exporting exporting;
    exporting.breakAll();
    EXPECT_EQ(exporting.exportAll(),
              (ExportOutcome{
                  false,
                  "No flow is ready to export — fix each flow's issues first (see its Issues tab).",
                  ""}));
    EXPECT_EQ(exporting.tools.swiftCalls(), "");
}

TEST(ExportFlows, ExportsAFlowWithWarnings) {
    const Exporting exporting;
    exporting.editFlow([](Flow& flow) {
        flow.nodes.push_back({Uuid::random(), {FlowNodeKind::End{"unreachable", false}}, {}});
    });
    const auto issues =
        FlowValidator::validate(exporting->flows->front(), *exporting->agents, *exporting->tools);
    ASSERT_FALSE(issues.empty());
    EXPECT_EQ(exporting.exportAll().message, "Export succeeded.");
}

TEST(ExportFlows, NamesAFlowThatCannotBeBuiltAmongThoseLeftOut) {
    const Exporting exporting;
    test::Drawing drawing;
    const Uuid tool = drawing.tool("Lookup");
    const Uuid agent = drawing.agent("Reader");
    drawing.connect(drawing.start(), tool);
    drawing.connect(tool, agent);
    drawing.connect(agent, drawing.end());
    exporting.add(std::move(drawing), "Tool first");
    EXPECT_EQ(exporting.exportAll().message, "Export succeeded. (skipped, had errors: Tool first)");
}

TEST(ExportFlows, FailsWhenTheToolSaysNothingOfSuccess) {
    const Exporting exporting;
    exporting.setTool("echo done; echo EXPORT_SUCCEEDED >&2");
    EXPECT_EQ(exporting.exportAll(), (ExportOutcome{false, "Export failed — see the details below.",
                                                    "done\n\nEXPORT_SUCCEEDED\n"}));
}

TEST(ExportFlows, FailsWithTheToolAndStillNamesWhatWasLeftOut) {
    const Exporting exporting;
    exporting.addBroken("Broken");
    exporting.setTool("echo EXPORT_SUCCEEDED; echo \"no room\" >&2; exit 1");
    EXPECT_EQ(exporting.exportAll(),
              (ExportOutcome{false,
                             "Export failed — see the details below. (skipped, had errors: Broken)",
                             "EXPORT_SUCCEEDED\n\nno room\n"}));
}

TEST(ExportFlows, FailsWhenTheToolIsKilled) {
    const Exporting exporting;
    exporting.setTool("echo EXPORT_SUCCEEDED; kill -KILL $$");
    EXPECT_FALSE(exporting.exportAll().isSuccess);
}

TEST(ExportFlows, ReadsMoreThanAPipeHolds) {
    const Exporting exporting;
    exporting.setTool("head -c 1000000 /dev/zero | tr '\\0' x; head -c 1000000 /dev/zero | tr "
                      "'\\0' y >&2; echo EXPORT_SUCCEEDED");
    EXPECT_TRUE(exporting.exportAll().isSuccess);
}

TEST(ExportFlows, FailsWhenTheToolCannotBeStarted) {
    const Exporting exporting;
    ASSERT_TRUE(exporting.toolChain->isSwiftToolchainAvailable());
    const auto swift = exporting.tools.folder / "bin/swift";
    std::filesystem::remove(swift);
    EXPECT_EQ(exporting.exportAll().message,
              "Couldn't launch ExportCLI: The program \"" + swift.string() + "\" wasn't found.");
}

TEST(ExportFlows, FailsWhenTheRequestCannotBeWritten) {
    Exporting exporting;
    exporting.tools.set("TMPDIR", (exporting.tools.folder / "none").string());
    const ExportOutcome outcome = exporting.exportAll();
    EXPECT_FALSE(outcome.isSuccess);
    EXPECT_TRUE(outcome.message.starts_with("Couldn't encode the export request: "))
        << outcome.message;
}

TEST(ExportFlows, FailsWithoutTheTools) {
    Exporting exporting;
    exporting.tools.set("OMBREL_STUDIO_CORE_PATH", "/no/such/core");
    exporting.toolChain = std::make_shared<ToolChain>();
    EXPECT_EQ(exporting.exportAll(),
              (ExportOutcome{false,
                             "OmbrelStudioCore not found at /no/such/core. The app's bundled copy "
                             "may be missing — rebuild the app, or set OMBREL_STUDIO_CORE_PATH.",
                             ""}));
}

TEST(ExportFlows, GoesOnBesideARun) {
    const Exporting exporting;
    exporting->isRunningFlow = true;
    EXPECT_TRUE(exporting.exportAll().isSuccess);
    EXPECT_TRUE(*exporting->isRunningFlow);
}

} // namespace
} // namespace ombrel
