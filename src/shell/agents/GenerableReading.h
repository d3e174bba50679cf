#pragma once

#include "core/AgentOutputKind.h"
#include "generable/GenerableImportWarning.h"
#include "shell/agents/OutputRow.h"
#include "shell/agents/SwiftColoring.h"

#include <QStringList>

#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// All that is shown of Swift source that is to become an output.
struct GenerableReading {
    SwiftColoring coloring;
    bool isBlank = true;
    std::vector<std::string> typeNames; // by line
    QStringList typeChoices;            // what they are called in the menu
    std::string rootName;               // empty: there is none
    std::optional<AgentOutputKind> output;
    QString heading; // above the rows
    std::vector<OutputRow> rows;
    std::vector<GenerableImportWarning> warnings;
};

// Reads the source. The chosen root stays when there is a type with that name, and is the first
// candidate otherwise. Linear in the source and what it becomes; any thread.
GenerableReading readGenerable(std::string source, std::string selectedRootName);

} // namespace ombrel
