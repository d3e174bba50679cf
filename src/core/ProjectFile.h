#pragma once

#include "core/PersistedProject.h"
#include "core/UnknownKeys.h"
#include "platform/ByteSink.h"
#include "platform/PropertyListBytes.h"
#include "platform/Result.h"

#include <optional>
#include <string>
#include <string_view>

// The project file: a binary property list of one PersistedProject. Everything here may be called
// from any thread.
namespace ombrel {

// The one type that is read and written.
inline constexpr std::string_view contentType = "com.mirvandel.lindquark.project";
inline constexpr std::string_view projectFileExtension = ".ombrel";

// What a file held that the snapshot does not, so that saving the snapshot would lose it.
struct LeftBehind {
    std::optional<std::string> ragIndexes; // why they could not be read
    UnknownKeys unknownKeys;

    bool any() const { return ragIndexes || unknownKeys.count > 0; }
    // What it is, as the user reads it; empty when there is nothing.
    std::string description() const;
    bool operator==(const LeftBehind&) const = default;
};

struct ReadProject {
    PersistedProject snapshot;
    LeftBehind leftBehind;
};

// Reads a project of this version or an older one (version 1 had a single index whose parts lay at
// the root), and of a newer one what can be understood. `ragIndexes` that cannot be read count as
// absent; everything else that is damaged is an error.
Result<ReadProject> readSnapshot(std::string_view fileContents);
// The same of an open file; takes the memory of the snapshot, not of the file.
Result<ReadProject> readSnapshot(PropertyListBytes fileContents);
// The same of the JSON that `encodeJson` writes of a snapshot.
Result<ReadProject> readSnapshotJson(std::string_view json);

// The contents of the file, always of the snapshot's own format version.
Result<std::string> writeFile(const PersistedProject& snapshot);
// The same, handed to a sink piece by piece. An error without a message means that the sink refused
// something.
Result<void> writeFile(const PersistedProject& snapshot, const ByteSink& sink);

} // namespace ombrel
