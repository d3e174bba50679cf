#include "platform/FileStamp.h"

namespace ombrel {

FileStamp FileStamp::of(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_size,
            status.st_mtim.tv_sec * std::int64_t{1'000'000'000} + status.st_mtim.tv_nsec};
}

} // namespace ombrel
