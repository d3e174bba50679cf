// Reads the text of one PDF for `PopplerPdf`, which starts this program with limits on its time and
// memory. A hostile file may crash it or make it run into a limit; nothing else depends on it.

#include "platform/PopplerPdfProtocol.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <poppler-document.h>
#include <poppler-global.h>
#include <poppler-page.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

namespace pdf = ombrel::pdf;

// Whether the C library's last answer was that there is no memory.
volatile std::sig_atomic_t lastAllocationFailed = 0;

void* noted(void* memory) {
    lastAllocationFailed = memory == nullptr ? 1 : 0;
    return memory;
}

} // namespace

// Poppler calls abort when memory is used up, and also for other reasons. To tell them apart, the
// allocations go through here.
extern "C" {
void* __libc_malloc(std::size_t size);                    // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t count, std::size_t size); // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* memory, std::size_t size);     // NOLINT(bugprone-reserved-identifier)

void* malloc(std::size_t size) noexcept {
    return noted(__libc_malloc(size));
}
void* calloc(std::size_t count, std::size_t size) noexcept {
    return noted(__libc_calloc(count, size));
}
void* realloc(void* memory, std::size_t size) noexcept {
    return size == 0 ? __libc_realloc(memory, size) : noted(__libc_realloc(memory, size));
}
}

namespace {

[[noreturn]] void endForLackOfMemory() {
    _exit(pdf::statusOutOfMemory);
}

[[noreturn]] void endAborted(int) {
    _exit(lastAllocationFailed != 0 ? pdf::statusOutOfMemory : pdf::statusCannotOpen);
}

void writeAll(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(STDOUT_FILENO, bytes.data(), bytes.size());
        if (count > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR) {
            _exit(pdf::statusCannotOpen); // nobody reads any more
        }
    }
}

void appendNumber(std::string& frame, std::uint64_t value, int length) {
    for (int i = 0; i < length; ++i) {
        frame += static_cast<char>((value >> (8 * i)) & 0xff);
    }
}

std::string textOf(const poppler::page& page) {
    const poppler::byte_array utf8 =
        page.text(poppler::rectf(), poppler::page::non_raw_non_physical_layout).to_utf8();
    std::string text(utf8.begin(), utf8.end());
    while (text.ends_with('\f') || text.ends_with('\0')) { // the end of the page
        text.pop_back();
    }
    return text;
}

int readFile(const char* file) {
    if (!std::filesystem::is_regular_file(file)) {
        return pdf::statusCannotOpen;
    }
    const std::unique_ptr<poppler::document> document(poppler::document::load_from_file(file));
    if (!document || document->is_locked()) {
        return pdf::statusCannotOpen;
    }
    const int count = std::max(document->pages(), 0);
    if (static_cast<std::uint64_t>(count) > pdf::maximumPages) {
        return pdf::statusTooManyPages;
    }
    std::string frame;
    appendNumber(frame, static_cast<std::uint64_t>(count), 8);
    writeAll(frame);
    for (int number = 0; number < count; ++number) {
        const std::unique_ptr<poppler::page> page(document->create_page(number));
        frame.clear();
        appendNumber(frame, page ? 1 : 0, 1);
        if (page) {
            const std::string text = textOf(*page);
            appendNumber(frame, text.size(), 4);
            frame += text;
        }
        writeAll(frame);
    }
    return pdf::statusComplete;
}

} // namespace

int main(int count, char** arguments) {
    std::set_new_handler(endForLackOfMemory);
    std::signal(SIGABRT, endAborted);
    poppler::set_debug_error_function([](const std::string&, void*) {}, nullptr);
    if (count != 2) {
        return pdf::statusCannotOpen;
    }
    try {
        // Without the exit handlers: what a hostile file left behind is not worth touching.
        _exit(readFile(arguments[1]));
    } catch (const std::exception&) {
        _exit(pdf::statusCannotOpen);
    }
}
