#pragma once

#include "flows/ToolChain.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ombrel::test {

// An environment variable that has another value, or none, as long as this lives.
class VariableForNow {
  public:
    VariableForNow(std::string name, const std::optional<std::string>& value)
        : m_name(std::move(name)) {
        if (const char* before = std::getenv(m_name.c_str())) {
            m_before = before;
        }
        set(value);
    }
    VariableForNow(const VariableForNow&) = delete;
    VariableForNow& operator=(const VariableForNow&) = delete;
    ~VariableForNow() { set(m_before); }

  private:
    void set(const std::optional<std::string>& value) {
        if (value) {
            setenv(m_name.c_str(), value->c_str(), 1);
        } else {
            unsetenv(m_name.c_str());
        }
    }

    std::string m_name;
    std::optional<std::string> m_before;
};

// A tool chain of shell scripts, and folders of this test's own for everything that is written.
class ScriptedTools {
  public:
    ScriptedTools() {
        std::filesystem::create_directories(runtime());
        std::filesystem::create_directories(core());
        std::filesystem::create_directories(folder / "tmp");
        setSwift("exit 0");
        write(folder / "bin/swiftc", "exit 0");
        set("OMBREL_RUNTIME_PATH", runtime().string());
        set("OMBREL_STUDIO_CORE_PATH", core().string());
        set("XDG_DATA_HOME", (folder / "data").string());
        set("XDG_CACHE_HOME", (folder / "cache").string());
        set("TMPDIR", (folder / "tmp").string());
        set("PATH", (folder / "bin").string() + ":" + std::getenv("PATH"));
        setStudioCLI("exit 0");
    }

    std::filesystem::path runtime() const { return folder / "OmbrelRuntime"; }
    std::filesystem::path core() const { return folder / "OmbrelStudioCore"; }
    std::filesystem::path studioCLI() const { return core() / ".build/debug/StudioCLI"; }

    // What `swift` does; the words that it was called with are kept.
    void setSwift(std::string_view script) const {
        write(folder / "bin/swift",
              "echo \"$@\" >> " + (folder / "swift-calls").string() + "\n" + std::string(script));
    }
    std::string swiftCalls() const {
        const auto calls = folder / "swift-calls";
        return std::filesystem::exists(calls) ? contentsOf(calls) : std::string();
    }
    // What the built StudioCLI does: $1 is the path of its request.
    void setStudioCLI(std::string_view script) const { write(studioCLI(), script); }
    // The files of the user's temporary folder.
    std::vector<std::filesystem::path> temporaryFiles() const {
        std::vector<std::filesystem::path> files;
        for (const auto& entry : std::filesystem::directory_iterator(folder / "tmp")) {
            files.push_back(entry.path());
        }
        return files;
    }
    // Another value, or none, of an environment variable for the rest of the test.
    void set(std::string name, const std::optional<std::string>& value) {
        m_variables.emplace_front(std::move(name), value);
    }

    TemporaryFolder folder;

  private:
    static void write(const std::filesystem::path& file, std::string_view script) {
        std::filesystem::create_directories(file.parent_path());
        // A program that runs can't be written to.
        std::filesystem::remove(file);
        std::ofstream(file, std::ios::binary) << "#!/bin/sh\n" << script << "\n";
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    }

    std::list<VariableForNow> m_variables; // the last first, as they are put back
};

} // namespace ombrel::test
