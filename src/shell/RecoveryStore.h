#pragma once

#include "core/PersistedProject.h"
#include "platform/Result.h"
#include "platform/Uuid.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ombrel {

// A project that was edited and not saved when its studio ended.
struct RecoveredProject {
    Uuid id;
    std::string name;                          // as its window was titled
    std::optional<std::filesystem::path> file; // where it belongs, if it has a file
    std::filesystem::path contents;            // the autosaved project
};

// The folder in which edited projects are kept until they are saved. All operations may be called
// from any thread, for one id from one at a time.
class RecoveryStore {
  public:
    explicit RecoveryStore(std::filesystem::path folder);

    Result<void> keep(Uuid id, const std::string& name,
                      const std::optional<std::filesystem::path>& file,
                      const PersistedProject& snapshot) const;
    void remove(Uuid id) const;
    // What is there, the newest first. What cannot be understood is left out.
    std::vector<RecoveredProject> list() const;

  private:
    std::filesystem::path contentsOf(Uuid id) const;
    std::filesystem::path noteOf(Uuid id) const;

    std::filesystem::path m_folder;
};

} // namespace ombrel
