#pragma once

#include "platform/ByteSink.h"
#include "platform/FileOperations.h"
#include "platform/FileStamp.h"
#include "platform/Result.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace ombrel {

struct ReplaceError {
    enum class Reason {
        exists,   // a file was to be made, and there is one
        changed,  // the file is not the one that was to be replaced
        rejected, // `write` gave false
        failed,   // the system refused something
    };
    Reason reason = Reason::failed;
    std::string message; // a sentence without an end, such as "No space left on device"
};

struct Replacement {
    // Which file may be replaced. Nothing: none may be there. In either case a file that has gone
    // meanwhile is made anew.
    std::optional<FileStamp> expected;
    bool replaceAny = false; // replace whatever file is there
    // The old file stays beside the new one under the first of these names that is free:
    // "STEM (keepOldAs)EXT", "STEM (keepOldAs 2)EXT"…
    std::optional<std::string> keepOldAs;
};

struct Replaced {
    FileStamp stamp; // of the new file
    std::optional<std::filesystem::path> keptOldFile;
    // Set when the new file is in its place, but the system could not promise that it is there
    // after a power failure.
    std::optional<std::string> notDurable;
};

// Replaces a file as a whole, or makes it: whoever looks, and whenever the process or the machine
// stops, finds the old contents or the new ones. Symbolic links are followed, the old file's
// permissions (and, as far as allowed, its owner) are kept, and a read-only file is refused.
// `write` hands the contents to the sink and returns whether it could.
// The contents are written to an unnamed file in the same folder, synchronised, and renamed into
// place while the folder is locked, so that two programs of this system do not pass each other
// between the check and the renaming; then the folder is synchronised. On failure nothing is left
// behind.
Result<Replaced, ReplaceError> replaceFile(const std::filesystem::path& path,
                                           const Replacement& replacement,
                                           const std::function<bool(const ByteSink&)>& write,
                                           FileOperations& files = FileOperations::system());

} // namespace ombrel
