#include "cli/ArgumentText.h"

#include "cli/Command.h"
#include "platform/Text.h"

#include <fstream>
#include <iterator>

namespace ombrel {

std::string readAll(const std::string& path) {
    if (path == "-") {
        return {std::istreambuf_iterator<char>(std::cin), {}};
    }
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad()) {
        throw Failure{"“" + path + "” couldn't be read."};
    }
    return text;
}

std::string argumentText(const std::string& argument) {
    if (!argument.starts_with('@')) {
        return argument;
    }
    const std::string path = argument.substr(1);
    const std::string text = readAll(path);
    if (!isValidUtf8(text)) {
        throw Failure{(path == "-" ? "Standard input" : "“" + path + "”") +
                      " isn't valid UTF-8 text."};
    }
    return std::string(withoutByteOrderMark(text));
}

} // namespace ombrel
