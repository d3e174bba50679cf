#include "shell/agents/GenerableReading.h"

#include "generable/GenerableImporter.h"
#include "generable/ImportTexts.h"
#include "platform/Text.h"
#include "shell/QtText.h"

#include <algorithm>
#include <utility>

namespace ombrel {

GenerableReading readGenerable(std::string source, std::string selectedRootName) {
    GenerableReading reading;
    reading.isBlank = trimWhitespacesAndNewlines(source).empty();
    const ParsedFile parsed = GenerableImporter::parse(source);
    for (const ParsedType& type : parsed.types) {
        reading.typeNames.push_back(type.name);
        reading.typeChoices.append(toQt(typeChoiceText(type)));
    }
    reading.rootName = std::move(selectedRootName);
    if (std::ranges::find(reading.typeNames, reading.rootName) == reading.typeNames.end()) {
        const auto roots = GenerableImporter::candidateRoots(parsed.types);
        reading.rootName = roots.empty() ? std::string() : roots.front().name;
    }
    if (!reading.rootName.empty()) {
        auto converted = GenerableImporter::convert(parsed.types, reading.rootName);
        reading.output = std::move(converted.output);
        reading.warnings = std::move(converted.warnings);
    }
    if (reading.output) {
        reading.heading = toQt(previewHeading(*reading.output));
        reading.rows = outputRows(*reading.output);
    }
    reading.coloring = SwiftColoring(std::move(source));
    return reading;
}

} // namespace ombrel
