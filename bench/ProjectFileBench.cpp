// Saves and opens a large project, and copies a file in the same durable way, each in a process of
// its own so that the peak of its memory can be told. bench/project_file_bench.py calls it.
#include "core/ProjectDocument.h"
#include "platform/AtomicFile.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <malloc.h>
#include <random>
#include <string>
#include <unistd.h>

namespace {

using namespace ombrel;

constexpr int embeddingSize = 384;
constexpr int chunksOfDocument = 500;

std::string words(std::mt19937_64& random, std::size_t length) {
    std::string text;
    while (text.size() < length) {
        for (std::uint64_t i = 2 + random() % 9; i > 0; --i) {
            text += static_cast<char>('a' + random() % 26);
        }
        text += random() % 12 == 0 ? ". " : " ";
    }
    return text;
}

Uuid nextID(std::mt19937_64& random) {
    Uuid id;
    for (auto& byte : id.bytes) {
        byte = static_cast<std::uint8_t>(random());
    }
    return id;
}

PersistedProject makeProject(int chunks) {
    std::mt19937_64 random(7);
    std::normal_distribution<float> component(0, 0.05F);
    PersistedRAGIndex index;
    index.id = nextID(random);
    index.name = "Default";
    index.variants.emplace_back();
    index.variants[0].id = nextID(random);
    index.selectedVariantID = index.variants[0].id;
    for (int made = 0; made < chunks;) {
        PersistedSourceDocument source;
        source.id = nextID(random);
        source.name = "document " + std::to_string(index.sources.size()) + ".md";
        std::vector<DocumentChunk> array;
        for (int i = 1; i <= chunksOfDocument && made < chunks; ++i, ++made) {
            DocumentChunk& chunk = array.emplace_back();
            chunk.id = nextID(random);
            chunk.index = i;
            chunk.breadcrumb = {source.name, words(random, 20)};
            chunk.text = words(random, 1000);
            chunk.tokenCount = static_cast<std::int64_t>(chunk.text.size() / 4);
            chunk.contextualNote = words(random, 120);
            auto& embedding = chunk.embedding.emplace(embeddingSize);
            for (double& number : embedding) {
                number = component(random); // as models give them: of 32 bits
            }
        }
        array.shrink_to_fit();
        source.chunkCount = static_cast<std::int64_t>(array.size());
        index.chunksByDocument[source.id] = ChunkArray(std::move(array));
        index.sources.push_back(std::move(source));
    }
    PersistedProject project;
    project.selectedRAGIndexID = index.id;
    project.selectedNavigatorItem = {NavigatorSelection::Rag{index.id}};
    project.ragIndexes.push_back(std::move(index));
    return project;
}

double bytesInUse() {
    const auto info = mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

double peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) {
            return std::strtod(line.c_str() + 6, nullptr) * 1024;
        }
    }
    return 0;
}

void report(double seconds, double values, double sum) {
    std::printf("{\"seconds\": %.6f, \"values\": %.0f, \"peak\": %.0f, \"sum\": %.17g}\n", seconds,
                values, peakMemory(), sum);
}

// Tells whether two readers read the same.
double sumOfEmbeddings(const PersistedProject& project) {
    double sum = 0;
    for (const auto& [id, chunks] : project.ragIndexes[0].chunksByDocument) {
        for (const DocumentChunk& chunk : chunks) {
            for (const double number : *chunk.embedding) {
                sum += number;
            }
        }
    }
    return sum;
}

double secondsOf(const std::function<bool()>& work) {
    const auto start = std::chrono::steady_clock::now();
    if (!work()) {
        std::fprintf(stderr, "failed\n");
        std::exit(1);
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

bool copyFile(const char* from, const char* to) {
    const int source = ::open(from, O_RDONLY);
    const auto copied = replaceFile(to, {{}, true, {}}, [source](const ByteSink& sink) {
        std::string block(std::size_t{1} << 20, '\0');
        for (;;) {
            const ssize_t got = ::read(source, block.data(), block.size());
            if (got <= 0) {
                return got == 0;
            }
            if (!sink({block.data(), static_cast<std::size_t>(got)})) {
                return false;
            }
        }
    });
    ::close(source);
    return copied.has_value();
}

} // namespace

// ProjectFileBench save CHUNKS FILE | open FILE | copy FILE COPY
int main(int argc, char** argv) {
    const std::string work = argc > 1 ? argv[1] : "";
    if (work == "save" && argc == 4) {
        const double before = bytesInUse();
        const PersistedProject project = makeProject(std::atoi(argv[2]));
        const double values = bytesInUse() - before;
        report(
            secondsOf([&] {
                return ProjectDocument::create(argv[3], project, Overwrite::anything).has_value();
            }),
            values, sumOfEmbeddings(project));
    } else if (work == "open" && argc == 3) {
        const double before = bytesInUse();
        std::optional<Result<OpenedProject>> opened;
        const double seconds = secondsOf([&] {
            opened = ProjectDocument::open(argv[2]);
            return opened->has_value();
        });
        report(seconds, bytesInUse() - before, sumOfEmbeddings((*opened)->snapshot));
    } else if (work == "copy" && argc == 4) {
        report(secondsOf([&] { return copyFile(argv[2], argv[3]); }), 0, 0);
    } else {
        std::fprintf(stderr, "save CHUNKS FILE | open FILE | copy FILE COPY\n");
        return 2;
    }
    return 0;
}
