#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace ombrel::test {

inline std::string contentsOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

inline void writeContents(const std::filesystem::path& file, std::string_view contents) {
    std::ofstream(file, std::ios::binary) << contents;
}

} // namespace ombrel::test
