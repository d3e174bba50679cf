#include "cli/Session.h"
#include "core/JsonEncoder.h"
#include "export/ArrayLiteralWarning.h"
#include "export/ExportReadiness.h"
#include "export/PackageGenerator.h"

namespace ombrel {

namespace {

struct ReadinessRow {
    std::string title;
    std::string state;
    std::string detail;

    static constexpr auto keys() {
        return std::tuple(required("title", &ReadinessRow::title),
                          required("state", &ReadinessRow::state),
                          required("detail", &ReadinessRow::detail));
    }
};

struct FileRow {
    std::string path;
    std::optional<std::string> size;

    static constexpr auto keys() {
        return std::tuple(required("path", &FileRow::path), optional("size", &FileRow::size));
    }
};

struct ReadinessReport {
    std::vector<ReadinessRow> rows;
    std::vector<FileRow> files;
    std::string usage;
    std::optional<std::string> blocked;
    std::optional<std::string> warning; // of the form with an array literal

    static constexpr auto keys() {
        return std::tuple(required("rows", &ReadinessReport::rows),
                          required("files", &ReadinessReport::files),
                          required("usage", &ReadinessReport::usage),
                          optional("blocked", &ReadinessReport::blocked),
                          optional("warning", &ReadinessReport::warning));
    }
};

struct ExportReport {
    std::string package;
    std::optional<std::string> warning;

    static constexpr auto keys() {
        return std::tuple(required("package", &ExportReport::package),
                          optional("warning", &ExportReport::warning));
    }
};

ReadinessReport readiness(const AppState& state) {
    ReadinessReport report;
    for (const ChecklistRow& row : exportChecklist(state)) {
        report.rows.push_back({row.title, std::string(rawValue(row.state)), row.detail});
    }
    for (const PreviewFile& file : previewFiles(state)) {
        report.files.push_back({file.path, file.size});
    }
    report.usage = usageText(state);
    report.blocked = exportBlockedText(state);
    report.warning = arrayLiteralWarning(state.indexedChunks());
    return report;
}

std::string readinessText(const ReadinessReport& report) {
    std::vector<std::vector<std::string>> rows;
    for (const ReadinessRow& row : report.rows) {
        rows.push_back({row.title, row.state, row.detail});
    }
    std::string text = table({std::string(checklistTitle), "", ""}, rows) + "\n";
    for (const FileRow& file : report.files) {
        text += file.path + (file.size ? "  " + *file.size : "") + "\n";
    }
    text += "\n" + report.usage + "\n";
    if (report.blocked) {
        text += "\n" + *report.blocked + "\n";
    }
    return text;
}

} // namespace

void addExportCommands(CLI::App& app, Invocation& invocation) {
    struct Options {
        std::string project;
        std::string folder;
        bool compact = false;
    };
    const auto options = std::make_shared<Options>();

    auto* check = addCommand(app, "check", "Show whether an index is ready to be exported",
                             "ombrel check handbook.ombrel", invocation);
    addProjectArgument(*check, options->project, invocation);
    check->callback([options, &invocation] {
        const Session session(options->project, invocation);
        const ReadinessReport report = readiness(*session);
        if (invocation.json) {
            invocation.printJson(encodeJson(report));
        } else {
            invocation.print(readinessText(report));
            if (report.warning) {
                invocation.note(*report.warning + " (`ombrel export --compact`)");
            }
        }
        if (report.blocked) {
            throw Failure{*report.blocked};
        }
    });

    auto* write =
        addCommand(app, "export", "Write the Swift package of an index into a folder",
                   "ombrel export handbook.ombrel ../MyApp/Packages --compact", invocation);
    addProjectArgument(*write, options->project, invocation);
    write->add_option("FOLDER", options->folder, "The folder that gets the package's folder")
        ->required();
    write->add_flag("--compact", options->compact,
                    "Pack the chunks into string literals: for any number of chunks");
    write->callback([options, &invocation] {
        const Session session(options->project, invocation);
        if (const auto blocked = exportBlockedText(*session)) {
            throw Failure{*blocked};
        }
        ExportReport report;
        if (!options->compact) {
            report.warning = arrayLiteralWarning(session->indexedChunks());
        }
        const auto package =
            exportPackage(*session, options->folder,
                          options->compact ? PackageForm::compact : PackageForm::arrayLiteral);
        if (!package) {
            throw Failure{package.error().message};
        }
        report.package = package->string();
        if (invocation.json) {
            invocation.printJson(encodeJson(report));
        } else {
            invocation.print("Package generated\n" + report.package + "\n");
        }
        if (report.warning) {
            invocation.note(*report.warning + " (`ombrel export --compact`)");
        }
    });
}

} // namespace ombrel
