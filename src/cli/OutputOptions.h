#pragma once

#include "cli/Command.h"
#include "core/AgentOutputKind.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// The options by which a command is told what an agent or a tool returns.
class OutputOptions {
  public:
    void addTo(CLI::App& command);

    // The output that they describe; nothing when none was given. Notes what an import could not
    // bring over. Throws `Failure` when there is no such output, or it is not complete.
    std::optional<AgentOutputKind> read(const Invocation& invocation) const;

  private:
    bool m_isText = false;
    std::vector<std::string> m_cases;
    std::vector<std::string> m_fields;
    std::optional<std::string> m_jsonFile;
    std::optional<std::string> m_generableFile;
    std::string m_root;
};

} // namespace ombrel
