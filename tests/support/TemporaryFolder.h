#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace ombrel::test {

// A new folder that is removed with everything in it at the end.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern =
            (std::filesystem::canonical(std::filesystem::temp_directory_path()) / "ombrel-XXXXXX")
                .string();
        if (!mkdtemp(pattern.data())) {
            throw std::runtime_error("no temporary folder");
        }
        m_path = pattern;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code error;
        std::filesystem::remove_all(m_path, error);
    }

    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path operator/(std::string_view name) const { return m_path / name; }

    // Writes a file, with the folders on its way. Its path.
    std::filesystem::path write(std::string_view name, std::string_view contents) const {
        const std::filesystem::path file = m_path / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << contents;
        return file;
    }

  private:
    std::filesystem::path m_path;
};

} // namespace ombrel::test
