#pragma once

#include "tests/flows/ScriptedTools.h"

#include <fcntl.h>
#include <filesystem>
#include <list>
#include <stdexcept>
#include <sys/file.h>
#include <unistd.h>

namespace ombrel::test {

// The tools that tests with the real tool chain build, in a folder beside the programs, where they
// stay for the next time. Only one test at a time has them; the others wait.
class BuiltTools {
  public:
    BuiltTools() {
        std::filesystem::create_directories(folder);
        m_lock = open((folder / "lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (flock(m_lock, LOCK_EX) != 0) {
            throw std::runtime_error("the folder of the built tools can't be locked");
        }
    }
    BuiltTools(const BuiltTools&) = delete;
    BuiltTools& operator=(const BuiltTools&) = delete;
    ~BuiltTools() { close(m_lock); }

    // From now on the user's data are those of the tests. Services that need the installed models
    // are made before.
    void use() {
        m_variables.emplace_back("XDG_DATA_HOME", (folder / "data").string());
        m_variables.emplace_back("XDG_CACHE_HOME", (folder / "cache").string());
    }

    const std::filesystem::path folder =
        std::filesystem::path(OMBREL_BINARY_DIR).parent_path() / "end-to-end-flows";

  private:
    int m_lock = -1;
    std::list<VariableForNow> m_variables;
};

} // namespace ombrel::test
