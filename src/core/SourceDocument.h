#pragma once

#include "core/SharedText.h"
#include "core/SourceStatus.h"
#include "core/SourceType.h"
#include "platform/Uuid.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace ombrel {

// One imported or pasted document.
struct SourceDocument {
    Uuid id;
    std::string name; // the file's last path component, or the title of pasted text
    SourceType type = SourceType::text;
    std::optional<std::int64_t> pageCount; // of a PDF
    std::int64_t chunkCount = 0;
    std::int64_t tokenCount = 0; // sum over its chunks
    SourceStatus status;
    std::optional<std::filesystem::path> fileURL; // where the file lies, absolute
    std::optional<SharedText> pastedText;

    bool operator==(const SourceDocument&) const = default;
};

} // namespace ombrel
