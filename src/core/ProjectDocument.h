#pragma once

#include "core/PersistedProject.h"
#include "core/ProjectFile.h"
#include "platform/FileOperations.h"
#include "platform/FileStamp.h"
#include "platform/Result.h"

#include <filesystem>
#include <optional>
#include <string>

namespace ombrel {

struct OpenedProject;

struct SaveError {
    enum class Reason {
        exists,        // there is a file of that name which this document never read
        changedOnDisk, // another program wrote the file since it was opened or saved
        failed,
    };
    Reason reason = Reason::failed;
    std::string message; // a sentence
};

struct SavedProject {
    // Where the file that was opened is now, when it held something that the new one doesn't.
    std::optional<std::filesystem::path> keptOldFile;
};

// Whether a save may replace a file that is not the one which the document knows.
enum class Overwrite { onlyKnown, anything };

// The file behind an open project: where it is, which file exactly was read or written last, and
// whether it held something that was left behind. A value; files are touched by its operations
// only, which may be called from any thread.
class ProjectDocument {
  public:
    // Belongs to no file yet: `saveAs` gives it one.
    ProjectDocument() = default;

    // The error is a sentence: "The project couldn't be opened: …".
    static Result<OpenedProject> open(const std::filesystem::path& path);
    // A new file; there must be none yet.
    static Result<ProjectDocument, SaveError>
    create(const std::filesystem::path& path, const PersistedProject& snapshot,
           Overwrite overwrite = Overwrite::onlyKnown,
           FileOperations& files = FileOperations::system());

    bool hasFile() const { return !m_path.empty(); }
    const std::filesystem::path& path() const { return m_path; }

    // Replaces the file by the snapshot, as a whole and durably. When another program wrote it
    // meanwhile, nothing is overwritten unless the user chose to. The first save after opening a
    // file that held something unreadable keeps that file beside the new one, under a name such as
    // "Handbook (before 2026-11-21 12.00.00).ombrel". The document must have a file.
    Result<SavedProject, SaveError> save(const PersistedProject& snapshot,
                                         Overwrite overwrite = Overwrite::onlyKnown,
                                         FileOperations& files = FileOperations::system());
    // Saves to another file, which becomes the document's own when that succeeds.
    Result<SavedProject, SaveError> saveAs(const std::filesystem::path& path,
                                           const PersistedProject& snapshot,
                                           Overwrite overwrite = Overwrite::onlyKnown,
                                           FileOperations& files = FileOperations::system());
    // Whether the file on disk is still the one that was opened or saved last.
    bool isCurrent() const;

  private:
    std::filesystem::path m_path;
    std::optional<FileStamp> m_stamp;
    bool m_keepsOldFile = false;
};

struct OpenedProject {
    PersistedProject snapshot;
    ProjectDocument document;
    LeftBehind leftBehind;
};

} // namespace ombrel
