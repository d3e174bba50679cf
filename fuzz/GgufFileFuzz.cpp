// Any bytes as a model file.
#include "platform/GgufFile.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const int descriptor = memfd_create("model.gguf", MFD_CLOEXEC);
    if (descriptor < 0 || write(descriptor, data, size) != static_cast<ssize_t>(size)) {
        std::abort();
    }
    const auto model = ombrel::GgufFile::read("/proc/self/fd/" + std::to_string(descriptor));
    // No file is both, whatever it says.
    if (model && model->isLanguageModel() && model->isEmbeddingModel()) {
        std::abort();
    }
    close(descriptor);
    return 0;
}
