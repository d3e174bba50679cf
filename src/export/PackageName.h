#pragma once

#include <string>
#include <string_view>

namespace ombrel {

// The name of a project's package, library, target, public enum and API file: its letters, marks
// and numbers, with "RAG" behind. "My Docs" gives "MyDocsRAG", "2024 Notes" gives "P2024NotesRAG"
// and "!!!" gives "ProjectRAG".
std::string packageName(std::string_view projectName);

} // namespace ombrel
