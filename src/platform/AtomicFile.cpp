#include "platform/AtomicFile.h"

#include "platform/Uuid.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <string_view>
#include <sys/xattr.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace ombrel {

namespace {

using std::filesystem::path;
using Reason = ReplaceError::Reason;

tl::unexpected<ReplaceError> refused(std::string message, Reason reason = Reason::failed) {
    return tl::unexpected(ReplaceError{reason, std::move(message)});
}

std::string systemMessage(int error) {
    return std::generic_category().message(error);
}

// Where the path leads when it is a symbolic link; the file there may not exist yet.
path followLinks(path file) {
    constexpr int mostLinks = 40;
    std::error_code error;
    for (int i = 0; i < mostLinks && std::filesystem::is_symlink(file, error); ++i) {
        const path next = std::filesystem::read_symlink(file, error);
        if (error) {
            break;
        }
        file = next.is_absolute() ? next : file.parent_path() / next;
    }
    return file;
}

// "STEM (NOTE)EXT" beside the file, the stem cut where the name would be too long.
path nameBeside(const path& file, const std::string& note) {
    constexpr std::size_t longestName = 255;
    const std::string tail = " (" + note + ")" + file.extension().string();
    std::string stem = file.stem().string();
    if (stem.size() + tail.size() > longestName) {
        std::size_t end = longestName > tail.size() ? longestName - tail.size() : 0;
        while (end > 0 && (static_cast<unsigned char>(stem[end]) & 0xC0) == 0x80) {
            --end;
        }
        stem.resize(end);
    }
    return file.parent_path() / (stem + tail);
}

// A descriptor that is closed, and a file that is removed, unless it is let go of.
class OpenFile {
  public:
    OpenFile(FileOperations& files, int descriptor) : m_files(files), m_descriptor(descriptor) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() {
        if (m_descriptor >= 0) {
            m_files.close(m_descriptor);
        }
    }
    explicit operator bool() const { return m_descriptor >= 0; }
    int operator*() const { return m_descriptor; }

  private:
    FileOperations& m_files;
    int m_descriptor;
};

class RemovedUnlessKept {
  public:
    explicit RemovedUnlessKept(FileOperations& files) : m_files(files) {}
    RemovedUnlessKept(const RemovedUnlessKept&) = delete;
    RemovedUnlessKept& operator=(const RemovedUnlessKept&) = delete;
    ~RemovedUnlessKept() {
        if (!m_name.empty()) {
            m_files.remove(m_name);
        }
    }
    void set(std::string name) { m_name = std::move(name); }
    const std::string& name() const { return m_name; }
    void keep() { m_name.clear(); }

  private:
    FileOperations& m_files;
    std::string m_name;
};

bool writeAll(FileOperations& files, int descriptor, std::string_view bytes, int& error) {
    while (!bytes.empty()) {
        const ssize_t written = files.write(descriptor, bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            error = errno;
            return false;
        }
    }
    return true;
}

// Gives the new file the old one's owner and permissions. What may not be given away is not widened
// either: where the group or the access list could not be kept, the group may do what others may.
bool keepPermissions(FileOperations& files, const path& old, const struct stat& status,
                     int descriptor) {
    constexpr const char* accessList = "system.posix_acl_access";
    struct stat mine {};
    if (files.status(descriptor, mine) != 0) {
        return false;
    }
    bool groupIsKept = true;
    if (mine.st_uid != status.st_uid || mine.st_gid != status.st_gid) {
        groupIsKept = files.setOwner(descriptor, status.st_uid, status.st_gid) == 0 ||
                      files.setOwner(descriptor, static_cast<uid_t>(-1), status.st_gid) == 0;
    }
    const ssize_t size = ::getxattr(old.c_str(), accessList, nullptr, 0);
    if (size > 0) {
        std::vector<char> list(static_cast<std::size_t>(size));
        groupIsKept = ::getxattr(old.c_str(), accessList, list.data(), list.size()) == size &&
                      ::fsetxattr(descriptor, accessList, list.data(), list.size(), 0) == 0 &&
                      groupIsKept;
    }
    mode_t mode = status.st_mode & 0777;
    if (!groupIsKept) {
        mode = (mode & 0707) | (mode & 07) << 3;
    }
    return files.setMode(descriptor, mode) == 0;
}

bool copyContents(FileOperations& files, const path& from, const path& to) {
    const OpenFile source(files, files.open(from.string(), O_RDONLY, 0));
    if (!source) {
        return false;
    }
    const OpenFile copy(files, files.open(to.string(), O_WRONLY | O_CREAT | O_EXCL, 0600));
    if (!copy) {
        return false;
    }
    struct stat status {};
    bool succeeded = files.status(*source, status) == 0;
    std::vector<char> block(std::size_t{1} << 20);
    int error = 0;
    while (succeeded) {
        const ssize_t got = ::read(*source, block.data(), block.size());
        if (got == 0) {
            break;
        }
        succeeded =
            got > 0 ? writeAll(files, *copy, {block.data(), static_cast<std::size_t>(got)}, error)
                    : errno == EINTR;
    }
    succeeded =
        succeeded && keepPermissions(files, from, status, *copy) && files.synchronise(*copy) == 0;
    if (!succeeded) {
        error = error != 0 ? error : errno;
        files.remove(to.string());
        errno = error;
    }
    return succeeded;
}

// Gives the old file a second name, or a copy where the file system has no second names.
Result<path, ReplaceError> keepOldFile(FileOperations& files, const path& file,
                                       const std::string& note) {
    constexpr int mostNames = 1000;
    for (int i = 1; i <= mostNames; ++i) {
        const path name = nameBeside(file, i == 1 ? note : note + " " + std::to_string(i));
        if (files.link(file.string(), name.string()) == 0) {
            return name;
        }
        if (errno != EEXIST && copyContents(files, file, name)) {
            return name;
        }
        if (errno != EEXIST) {
            break;
        }
    }
    return refused("The old file couldn't be kept: " + systemMessage(errno));
}

// Waits for the folder's lock, which the system drops with the descriptor. A file system without
// locks is used without.
bool lockFolder(FileOperations& files, int folder) {
    constexpr auto longest = std::chrono::seconds(10);
    constexpr auto pause = std::chrono::milliseconds(10);
    const auto start = std::chrono::steady_clock::now();
    while (files.lock(folder) != 0) {
        if (errno == EWOULDBLOCK && std::chrono::steady_clock::now() - start < longest) {
            std::this_thread::sleep_for(pause);
        } else if (errno != EINTR) {
            return errno == EBADF || errno == ENOLCK || errno == EOPNOTSUPP || errno == EINVAL;
        }
    }
    return true;
}

class Saving {
  public:
    Saving(const path& file, const Replacement& replacement, FileOperations& files)
        : m_file(followLinks(file)),
          m_folder(m_file.has_parent_path() ? m_file.parent_path() : path(".")),
          m_replacement(replacement), m_files(files) {}

    Result<Replaced, ReplaceError> run(const std::function<bool(const ByteSink&)>& write) {
        if (const auto checked = check(); !checked) {
            return tl::unexpected(checked.error());
        }
        if (m_exists && ::faccessat(AT_FDCWD, m_file.c_str(), W_OK, AT_EACCESS) != 0) {
            return refused(systemMessage(errno));
        }
        bool nameRefused = false;
        auto result = attempt(write, true, nameRefused);
        return nameRefused ? attempt(write, false, nameRefused) : std::move(result);
    }

  private:
    // Looks at the file that is there now, and whether it is the one that may be replaced.
    Result<void, ReplaceError> check() {
        m_exists = m_files.status(m_file.string(), m_status) == 0;
        if (!m_exists) {
            return errno == ENOENT ? Result<void, ReplaceError>() : refused(systemMessage(errno));
        }
        if (!S_ISREG(m_status.st_mode)) {
            return refused("It is not a regular file");
        }
        if (m_replacement.replaceAny) {
            return {};
        }
        if (!m_replacement.expected) {
            return refused("There is already a file of that name", Reason::exists);
        }
        if (FileStamp::of(m_status) != *m_replacement.expected) {
            return refused("The file on disk was changed by another program", Reason::changed);
        }
        return {};
    }

    std::string temporaryName() const {
        return (m_folder / (".ombrel-" + Uuid::random().text() + ".tmp")).string();
    }

    // With `unnamed` the file that is written has no name until it is complete, so that nothing is
    // left of it when the process ends. `nameRefused` is set when the system cannot do that.
    Result<Replaced, ReplaceError> attempt(const std::function<bool(const ByteSink&)>& write,
                                           bool unnamed, bool& nameRefused) {
        const mode_t mode = m_exists ? 0600 : 0666;
        RemovedUnlessKept temporary(m_files);
        std::string name = temporaryName();
        const OpenFile file(m_files,
                            unnamed ? m_files.open(m_folder.string(), O_TMPFILE | O_WRONLY, mode)
                                    : m_files.open(name, O_WRONLY | O_CREAT | O_EXCL, mode));
        if (!file) {
            nameRefused = unnamed && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL ||
                                      errno == ENOSYS);
            return refused(systemMessage(errno));
        }
        if (!unnamed) {
            temporary.set(name);
        }
        int error = 0;
        const bool written =
            write([&](std::string_view bytes) { return writeAll(m_files, *file, bytes, error); });
        if (!written) {
            return error == 0 ? refused("", Reason::rejected) : refused(systemMessage(error));
        }
        if (m_exists && !keepPermissions(m_files, m_file, m_status, *file)) {
            return refused(systemMessage(errno));
        }
        struct stat status {};
        if (m_files.synchronise(*file) != 0 || m_files.status(*file, status) != 0) {
            return refused(systemMessage(errno));
        }

        const OpenFile folder(m_files, m_files.open(m_folder.string(), O_RDONLY | O_DIRECTORY, 0));
        if (!folder) {
            return refused(systemMessage(errno));
        }
        if (!lockFolder(m_files, *folder)) {
            return refused(errno == EWOULDBLOCK ? "Another program is saving in the same folder"
                                                : systemMessage(errno));
        }
        if (const auto checked = check(); !checked) {
            return tl::unexpected(checked.error());
        }
        if (unnamed) {
            if (m_files.linkDescriptor(*file, name) != 0) {
                nameRefused = true;
                return refused(systemMessage(errno));
            }
            temporary.set(name);
        }
        Replaced replaced{FileStamp::of(status), {}, {}};
        RemovedUnlessKept kept(m_files);
        if (m_exists && m_replacement.keepOldAs) {
            auto old = keepOldFile(m_files, m_file, *m_replacement.keepOldAs);
            if (!old) {
                return tl::unexpected(std::move(old.error()));
            }
            kept.set(old->string());
            replaced.keptOldFile = std::move(*old);
        }
        if (m_files.rename(name, m_file.string()) != 0) {
            return refused(systemMessage(errno));
        }
        temporary.keep();
        kept.keep();
        if (m_files.synchronise(*folder) != 0) {
            replaced.notDurable = systemMessage(errno);
        }
        return replaced;
    }

    path m_file;
    path m_folder;
    const Replacement& m_replacement;
    FileOperations& m_files;
    bool m_exists = false;
    struct stat m_status {};
};

} // namespace

Result<Replaced, ReplaceError> replaceFile(const path& file, const Replacement& replacement,
                                           const std::function<bool(const ByteSink&)>& write,
                                           FileOperations& files) {
    return Saving(file, replacement, files).run(write);
}

} // namespace ombrel
