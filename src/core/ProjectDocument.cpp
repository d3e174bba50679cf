#include "core/ProjectDocument.h"

#include "platform/AtomicFile.h"
#include "platform/PropertyListBytes.h"

#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace ombrel {

namespace {

using Reason = SaveError::Reason;

std::string quotedName(const std::filesystem::path& file) {
    return "“" + file.filename().string() + "”";
}

tl::unexpected<SaveError> notSaved(std::string message, Reason reason = Reason::failed) {
    return tl::unexpected(SaveError{reason, std::move(message)});
}

tl::unexpected<Error> notOpened(const std::string& why) {
    return failure("The project couldn't be opened: " + why);
}

// "before 2026-11-21 12.00.00", of the local clock.
std::string beforeNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[64];
    return std::string(text, std::strftime(text, sizeof text, "before %Y-%m-%d %H.%M.%S", &local));
}

class Descriptor {
  public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    int operator*() const { return m_descriptor; }

  private:
    int m_descriptor;
};

} // namespace

Result<OpenedProject> ProjectDocument::open(const std::filesystem::path& file) {
    const auto systemError = [] { return notOpened(std::generic_category().message(errno) + "."); };
    // Not waiting for the other end of a pipe; regular files don't care.
    const Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat before {};
    struct stat after {};
    if (*descriptor < 0 || ::fstat(*descriptor, &before) != 0) {
        return systemError();
    }
    if (!S_ISREG(before.st_mode)) {
        return notOpened("The file isn't a project file or is damaged. It is not a regular file.");
    }
    ::posix_fadvise(*descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    auto read =
        readSnapshot(PropertyListBytes(*descriptor, static_cast<std::uint64_t>(before.st_size)));
    if (::fstat(*descriptor, &after) != 0) {
        return systemError();
    }
    const FileStamp stamp = FileStamp::of(before);
    if (FileStamp::of(after) != stamp) {
        return notOpened("Another program was writing the file. Try again.");
    }
    if (!read) {
        return notOpened(read.error().message);
    }
    OpenedProject opened{std::move(read->snapshot), {}, std::move(read->leftBehind)};
    opened.document.m_path = file;
    opened.document.m_stamp = stamp;
    opened.document.m_keepsOldFile = opened.leftBehind.any();
    return opened;
}

Result<ProjectDocument, SaveError> ProjectDocument::create(const std::filesystem::path& file,
                                                           const PersistedProject& snapshot,
                                                           Overwrite overwrite,
                                                           FileOperations& files) {
    ProjectDocument document;
    const auto saved = document.saveAs(file, snapshot, overwrite, files);
    if (!saved) {
        return tl::unexpected(saved.error());
    }
    return document;
}

Result<SavedProject, SaveError> ProjectDocument::save(const PersistedProject& snapshot,
                                                      Overwrite overwrite, FileOperations& files) {
    if (!hasFile()) {
        return notSaved("The project couldn't be saved: it has no file yet.");
    }
    Replacement replacement;
    replacement.expected = m_stamp;
    replacement.replaceAny = overwrite == Overwrite::anything;
    if (m_keepsOldFile) {
        replacement.keepOldAs = beforeNow();
    }
    std::string encodingProblem;
    const auto replaced = replaceFile(
        m_path, replacement,
        [&](const ByteSink& sink) {
            const auto written = writeFile(snapshot, sink);
            if (!written) {
                encodingProblem = written.error().message;
            }
            return written.has_value();
        },
        files);
    if (!replaced) {
        const ReplaceError& error = replaced.error();
        switch (error.reason) {
        case ReplaceError::Reason::exists:
            return notSaved("The project couldn't be saved: there is already a file " +
                                quotedName(m_path) + ".",
                            Reason::exists);
        case ReplaceError::Reason::changed:
            return notSaved("The project couldn't be saved: " + quotedName(m_path) +
                                " was changed on disk by another program since it was opened. "
                                "Nothing was overwritten.",
                            Reason::changedOnDisk);
        case ReplaceError::Reason::rejected:
            return notSaved("The project couldn't be saved: " + encodingProblem);
        case ReplaceError::Reason::failed:
            break;
        }
        return notSaved("The project couldn't be saved: " + error.message + ".");
    }
    m_stamp = replaced->stamp;
    m_keepsOldFile = false;
    if (replaced->notDurable) {
        return notSaved("The project was saved, but it isn't certain that it would outlast a "
                        "power failure: " +
                        *replaced->notDurable + ".");
    }
    return SavedProject{replaced->keptOldFile};
}

Result<SavedProject, SaveError> ProjectDocument::saveAs(const std::filesystem::path& file,
                                                        const PersistedProject& snapshot,
                                                        Overwrite overwrite,
                                                        FileOperations& files) {
    std::error_code error;
    if (hasFile() && std::filesystem::equivalent(file, m_path, error)) {
        return save(snapshot, overwrite, files);
    }
    ProjectDocument other;
    other.m_path = file;
    auto saved = other.save(snapshot, overwrite, files);
    if (other.m_stamp) { // set as soon as the new file is in its place
        *this = std::move(other);
    }
    return saved;
}

bool ProjectDocument::isCurrent() const {
    struct stat status {};
    return m_stamp && ::stat(m_path.c_str(), &status) == 0 && FileStamp::of(status) == *m_stamp;
}

} // namespace ombrel
