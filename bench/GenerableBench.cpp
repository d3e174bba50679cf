// GenerableBench FILE: reads the Swift source five times and prints, as one JSON object, the
// seconds of processor time of the fastest time for the tokens alone and for everything, and how
// many tokens and types there are.
// GenerableBench --names FILE: prints the name of each type in a line.
#include "generable/GenerableImporter.h"
#include "generable/SwiftLexer.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>

namespace {

template <class Work>
double secondsOf(Work&& work) {
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

} // namespace

int main(int argc, char** argv) {
    const bool printsNames = argc == 3 && std::string_view(argv[1]) == "--names";
    if (argc != 2 && !printsNames) {
        std::fprintf(stderr, "usage: GenerableBench [--names] FILE\n");
        return 2;
    }
    std::ifstream file(argv[argc - 1], std::ios::binary);
    const std::string source{std::istreambuf_iterator<char>(file), {}};
    if (source.empty()) {
        std::fprintf(stderr, "GenerableBench: nothing to read in %s\n", argv[argc - 1]);
        return 1;
    }
    if (printsNames) {
        for (const ombrel::ParsedType& type : ombrel::GenerableImporter::parse(source).types) {
            std::printf("%s\n", type.name.c_str());
        }
        return 0;
    }
    double lexing = std::numeric_limits<double>::infinity();
    double everything = lexing;
    std::size_t tokens = 0;
    std::size_t types = 0;
    for (int round = 0; round < 5; ++round) {
        lexing = std::min(
            lexing, secondsOf([&] { tokens = ombrel::SwiftLexer::tokenize(source).list.size(); }));
        everything = std::min(everything, secondsOf([&] {
                                  types = ombrel::GenerableImporter::parse(source).types.size();
                              }));
    }
    std::printf("{\"lexing\": %.9f, \"seconds\": %.9f, \"tokens\": %zu, \"types\": %zu}\n", lexing,
                everything, tokens, types);
}
