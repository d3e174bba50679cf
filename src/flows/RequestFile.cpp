#include "flows/RequestFile.h"

#include "platform/Uuid.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ombrel {

namespace {

std::string reason(int error) {
    return std::generic_category().message(error) + ".";
}

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return false;
        }
        bytes.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return true;
}

} // namespace

RequestFile::RequestFile(std::filesystem::path path) : m_path(std::move(path)) {}

RequestFile::~RequestFile() {
    std::error_code ignored;
    std::filesystem::remove(m_path, ignored);
}

Result<std::shared_ptr<const RequestFile>>
RequestFile::makeOf(std::string_view prefix, const std::stop_token& stop,
                    const std::function<bool(const ByteSink&)>& write) {
    std::error_code error;
    const auto folder = std::filesystem::temp_directory_path(error);
    if (error) {
        return failure("There is no temporary folder: " + error.message() + ".");
    }
    const auto path = folder / (std::string(prefix) + "-" + Uuid::random().text() + ".json");
    const int descriptor =
        open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (descriptor < 0) {
        return failure(reason(errno));
    }
    std::shared_ptr<const RequestFile> file(new RequestFile(path));
    int problem = 0;
    const bool isWhole = write([&](std::string_view bytes) {
        if (stop.stop_requested()) {
            problem = ECANCELED;
        } else if (!writeAll(descriptor, bytes)) {
            problem = errno;
        }
        return problem == 0;
    });
    const bool isClosed = close(descriptor) == 0;
    if (problem != 0 || (isWhole && !isClosed)) {
        return failure(reason(problem != 0 ? problem : errno));
    }
    if (!isWhole) {
        return failure("It is nested too deeply.");
    }
    return file;
}

} // namespace ombrel
