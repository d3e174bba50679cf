#include "platform/PopplerPdf.h"

#include "platform/Process.h"
#include "platform/RunLoopExecutor.h"
#include "platform/Text.h"
#include "tests/platform/Await.h"
#include "tests/support/TestExecutor.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace ombrel {
namespace {

using Read = Result<std::optional<PdfDocument>>;
using Objects = std::map<int, std::string>;

// A file of the given objects, of which the first is the catalogue. `size` may say that the table
// of objects is longer than they are.
std::string pdfOf(const Objects& objects, int size = 0) {
    std::string file = "%PDF-1.7\n";
    std::map<int, std::size_t> offsets;
    for (const auto& [number, body] : objects) {
        offsets[number] = file.size();
        file += std::to_string(number) + " 0 obj\n" + body + "\nendobj\n";
    }
    const std::size_t table = file.size();
    const int end = std::max(objects.rbegin()->first + 1, size);
    file += "xref\n0 " + std::to_string(end) + "\n";
    for (int number = 0; number < end; ++number) {
        const auto found = offsets.find(number);
        std::string offset = std::to_string(found == offsets.end() ? 0 : found->second);
        offset.insert(0, 10 - offset.size(), '0');
        file += offset + (found == offsets.end() ? " 65535 f \n" : " 00000 n \n");
    }
    file += "trailer\n<< /Size " + std::to_string(end) + " /Root 1 0 R >>\nstartxref\n" +
            std::to_string(table) + "\n%%EOF\n";
    return file;
}

std::string streamOf(const std::string& content, const std::string& entries = "") {
    return "<< /Length " + std::to_string(content.size()) + " " + entries + ">>\nstream\n" +
           content + "\nendstream";
}

const std::string resources = "/Resources << /Font << /F1 << /Type /Font /Subtype /Type1 "
                              "/BaseFont /Helvetica /Encoding /WinAnsiEncoding >> >> "
                              "/XObject << /X 100 0 R >> >>";

std::string pageOf(int content) {
    return "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 612 792] " + resources + " /Contents " +
           std::to_string(content) + " 0 R >>";
}

// A document with a page for each content stream: page objects from 10, their contents from 50.
Objects documentOf(const std::vector<std::string>& contents) {
    Objects objects;
    std::string kids;
    int number = 0;
    for (const std::string& content : contents) {
        kids += std::to_string(10 + number) + " 0 R ";
        objects[10 + number] = pageOf(50 + number);
        objects[50 + number] = streamOf(content);
        ++number;
    }
    objects[1] = "<< /Type /Catalog /Pages 2 0 R >>";
    objects[2] =
        "<< /Type /Pages /Kids [" + kids + "] /Count " + std::to_string(contents.size()) + " >>";
    return objects;
}

std::string line(const std::string& text, int height) {
    return "BT /F1 12 Tf 72 " + std::to_string(height) + " Td (" + text + ") Tj ET\n";
}

// A page whose content doubles forty times: it never ends.
Objects endlessDocument() {
    Objects objects = documentOf({"/X Do"});
    for (int i = 0; i < 40; ++i) {
        objects[100 + i] =
            streamOf("/X Do /X Do", "/Type /XObject /Subtype /Form /BBox [0 0 9 9] /Resources << "
                                    "/XObject << /X " +
                                        std::to_string(101 + i) + " 0 R >> >> ");
    }
    objects[140] = streamOf("", "/Type /XObject /Subtype /Form /BBox [0 0 9 9] ");
    return objects;
}

class PopplerPdfTest : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "ombrel-pdf-XXXXXX");
        m_folder = mkdtemp(pattern.data());
    }
    void TearDown() override {
        unsetenv("OMBREL_PDF_HELPER");
        std::filesystem::remove_all(m_folder);
    }

    std::filesystem::path fileOf(const std::string& bytes, const char* name = "file.pdf") const {
        const auto path = m_folder / name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }
    static Read read(const std::filesystem::path& file, PdfLimits limits = {}) {
        const auto executor = std::make_shared<RunLoopExecutor>();
        PopplerPdf pdf(executor, limits);
        return test::await(executor, pdf.read(file));
    }
    Read readBytes(const std::string& bytes, PdfLimits limits = {}) const {
        return read(fileOf(bytes), limits);
    }
    // "2 pages: [text][none]", "cannot be opened", or the error's message.
    static std::string summary(const Read& result) {
        if (!result) {
            return result.error().message;
        }
        if (!*result) {
            return "cannot be opened";
        }
        std::string text = std::to_string((*result)->pageCount) + " pages: ";
        for (const auto& page : (*result)->pages) {
            text += page ? "[" + std::string(trimWhitespacesAndNewlines(*page)) + "]" : "none";
        }
        return text;
    }
    // Another program in the helper's place.
    void useHelper(const std::string& script) const {
        const auto path = fileOf("#!/bin/sh\n" + script, "helper");
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        setenv("OMBREL_PDF_HELPER", path.c_str(), 1);
    }
    void runQpdf(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "qpdf");
        ProcessLaunch launch;
        launch.arguments = std::move(arguments);
        const auto executor = std::make_shared<RunLoopExecutor>();
        const auto result = test::await(executor, runToEnd(executor, launch, {}));
        ASSERT_TRUE(result) << result.error().message;
        ASSERT_TRUE(result->exit.succeeded()) << result->error;
    }
    std::filesystem::path m_folder;
};

TEST_F(PopplerPdfTest, GivesTheTextOfEachPage) {
    const auto result = readBytes(
        pdfOf(documentOf({line("First page", 700), line("Second", 700) + line("page", 685)})));
    EXPECT_EQ(summary(result), "2 pages: [First page][Second\npage]");
}

TEST_F(PopplerPdfTest, PutsABlankLineBetweenBlocks) {
    std::string content;
    for (const int top : {700, 600}) {
        content += line("A paragraph that runs over two lines", top);
        content += line("of the page, one below the other.", top - 14);
    }
    EXPECT_EQ(summary(readBytes(pdfOf(documentOf({content})))),
              "1 pages: [A paragraph that runs over two lines\nof the page, one below the other."
              "\n\nA paragraph that runs over two lines\nof the page, one below the other.]");
}

TEST_F(PopplerPdfTest, GivesUtf8) {
    EXPECT_EQ(summary(readBytes(pdfOf(documentOf({line("caf\\351 \\200 \\226", 700)})))),
              "1 pages: [café € –]");
}

TEST_F(PopplerPdfTest, AnEmptyPageHasEmptyText) {
    const auto result = readBytes(pdfOf(documentOf({line("a", 700), "", "0 0 9 9 re f"})));
    ASSERT_TRUE(result && *result);
    ASSERT_EQ((*result)->pages.size(), 3u);
    EXPECT_EQ((*result)->pages[1], "");
    EXPECT_EQ((*result)->pages[2], "");
}

TEST_F(PopplerPdfTest, ADocumentWithoutPagesHasNone) {
    EXPECT_EQ(summary(readBytes(pdfOf(documentOf({})))), "0 pages: ");
}

TEST_F(PopplerPdfTest, APageThatCannotBeReadHasNoText) {
    Objects objects = documentOf({line("a", 700), line("b", 700)});
    objects.erase(10);
    objects[2] = "<< /Type /Pages /Kids [10 0 R 11 0 R] /Count 5 >>";
    const auto result = readBytes(pdfOf(objects));
    ASSERT_TRUE(result && *result);
    EXPECT_EQ((*result)->pageCount, 5);
    ASSERT_EQ((*result)->pages.size(), 5u);
    EXPECT_FALSE((*result)->pages[4]);
}

TEST_F(PopplerPdfTest, WhatIsNoPdfCannotBeOpened) {
    EXPECT_EQ(summary(readBytes("")), "cannot be opened");
    EXPECT_EQ(summary(readBytes("Just some text.\n")), "cannot be opened");
    EXPECT_EQ(summary(readBytes(std::string(100'000, '\0'))), "cannot be opened");
    EXPECT_EQ(summary(readBytes("%PDF-1.7\n%%EOF\n")), "cannot be opened");
    EXPECT_EQ(summary(read(m_folder / "missing.pdf")), "cannot be opened");
    EXPECT_EQ(summary(read(m_folder)), "cannot be opened");
}

TEST_F(PopplerPdfTest, ANameIsNeverAnOption) {
    EXPECT_EQ(summary(read("--help")), "cannot be opened");
    const std::string bytes = pdfOf(documentOf({line("a", 700)}));
    EXPECT_EQ(summary(read(fileOf(bytes, "--version é \n$HOME.pdf"))), "1 pages: [a]");
}

TEST_F(PopplerPdfTest, APipeInPlaceOfAFileCannotBeOpened) {
    const auto path = m_folder / "pipe.pdf";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    EXPECT_EQ(summary(read(path)), "cannot be opened");
    const auto endless = m_folder / "zero.pdf";
    std::filesystem::create_symlink("/dev/zero", endless);
    EXPECT_EQ(summary(read(endless)), "cannot be opened");
}

TEST_F(PopplerPdfTest, ATruncatedFileNeverTakesTheProgramDown) {
    const std::string whole = pdfOf(documentOf({line("First page", 700), line("Second", 700)}));
    for (std::size_t length = 0; length < whole.size(); length += 97) {
        const auto result = readBytes(whole.substr(0, length));
        EXPECT_TRUE(result) << length << ": " << result.error().message;
    }
}

TEST_F(PopplerPdfTest, DamagedBytesNeverTakeTheProgramDown) {
    const std::string whole = pdfOf(documentOf({line("First page", 700), line("Second", 700)}));
    for (std::size_t at = 5; at < whole.size(); at += 41) {
        std::string damaged = whole;
        damaged[at] = static_cast<char>(damaged[at] ^ 0x15);
        const auto result = readBytes(damaged);
        EXPECT_TRUE(result) << at << ": " << result.error().message;
    }
}

TEST_F(PopplerPdfTest, AnEncryptedFileOpensOnlyWithoutAUserPassword) {
    const auto plain = fileOf(pdfOf(documentOf({line("Secret", 700)})));
    const auto locked = m_folder / "locked.pdf";
    const auto open = m_folder / "open.pdf";
    runQpdf({"--encrypt", "user", "owner", "256", "--", plain, locked});
    runQpdf({"--encrypt", "", "owner", "256", "--", plain, open});
    EXPECT_EQ(summary(read(locked)), "cannot be opened");
    EXPECT_EQ(summary(read(open)), "1 pages: [Secret]");
}

TEST_F(PopplerPdfTest, ALoopInThePageTreeEnds) {
    Objects objects = documentOf({line("a", 700)});
    objects[2] = "<< /Type /Pages /Kids [2 0 R 10 0 R] /Count 2 >>";
    const auto result = readBytes(pdfOf(objects));
    ASSERT_TRUE(result && *result);
    EXPECT_EQ((*result)->pageCount, 2);
}

TEST_F(PopplerPdfTest, AFormInsideItselfEnds) {
    Objects objects = documentOf({line("a", 700) + "/X Do"});
    objects[100] = streamOf("/X Do", "/Type /XObject /Subtype /Form /BBox [0 0 9 9] " + resources);
    EXPECT_EQ(summary(readBytes(pdfOf(objects))), "1 pages: [a]");
}

TEST_F(PopplerPdfTest, APageCountBeyondTheFileIsNotBelieved) {
    Objects objects = documentOf({line("a", 700)});
    objects[2] = "<< /Type /Pages /Kids [10 0 R] /Count 1000000000 >>";
    const auto result = readBytes(pdfOf(objects));
    ASSERT_TRUE(result && *result);
    EXPECT_LT((*result)->pageCount, 1000);
}

TEST_F(PopplerPdfTest, TooManyPagesAreAnError) {
    Objects objects = documentOf({line("a", 700)});
    objects[2] = "<< /Type /Pages /Kids [10 0 R] /Count 100001 >>";
    EXPECT_EQ(summary(readBytes(pdfOf(objects, 200'000))), "The PDF has more than 100000 pages.");
}

TEST_F(PopplerPdfTest, TooMuchTimeIsAnError) {
    const auto file = fileOf(pdfOf(endlessDocument()));
    const auto executor = std::make_shared<test::TestExecutor>();
    PopplerPdf pdf(executor);
    const auto result = test::start(*executor, pdf.read(file));
    executor->advance(std::chrono::seconds(59));
    EXPECT_FALSE(*result);
    executor->advance(std::chrono::seconds(1));
    while (!*result) {
        executor->runAll();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(summary(**result), "Reading the PDF took longer than 60 seconds.");
}

TEST_F(PopplerPdfTest, TooMuchProcessorTimeIsAnError) {
    const auto file = fileOf(pdfOf(endlessDocument()));
    // The clock of this executor stands still: only the kernel ends the helper.
    const auto executor = std::make_shared<test::TestExecutor>();
    PdfLimits limits;
    limits.time = std::chrono::seconds(1);
    PopplerPdf pdf(executor, limits);
    const auto result = test::start(*executor, pdf.read(file));
    while (!*result) {
        executor->runAll();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(summary(**result), "Reading the PDF took longer than 1 seconds.");
}

TEST_F(PopplerPdfTest, TooMuchMemoryIsAnError) {
    // Each of these saves the whole state of drawing, and none gives it back.
    std::string content;
    while (content.size() < 8'000'000) {
        content += "q\n";
    }
    EXPECT_EQ(summary(readBytes(pdfOf(documentOf({content})))),
              "Reading the PDF took more than 1024 MB of memory.");
}

TEST_F(PopplerPdfTest, TooMuchTextIsAnError) {
    std::string content;
    for (int top = 780; top > 0; top -= 10) {
        content += line("Some forty characters of text on a line.", top);
    }
    PdfLimits limits;
    limits.textBytes = std::uint64_t{1} << 20;
    std::vector<std::string> pages(40, content);
    EXPECT_EQ((*readBytes(pdfOf(documentOf(pages)), limits))->pageCount, 40);
    limits.textBytes = 100'000;
    EXPECT_EQ(summary(readBytes(pdfOf(documentOf(pages)), limits)),
              "The PDF holds more than 0 MB of text.");
}

TEST_F(PopplerPdfTest, AHelperThatCrashesMeansThatTheFileCannotBeOpened) {
    useHelper("kill -SEGV $$\n");
    EXPECT_EQ(summary(read(m_folder / "any.pdf")), "cannot be opened");
    useHelper("exit 1\n");
    EXPECT_EQ(summary(read(m_folder / "any.pdf")), "cannot be opened");
}

TEST_F(PopplerPdfTest, AHelperThatIsCutOffMeansThatTheFileCannotBeOpened) {
    for (const char* frames :
         {"", "\\1\\0\\0", "\\1\\0\\0\\0\\0\\0\\0\\0", "\\1\\0\\0\\0\\0\\0\\0\\0\\1\\5\\0",
          "\\1\\0\\0\\0\\0\\0\\0\\0\\1\\5\\0\\0\\0abcd", "\\377\\377\\377\\377\\377\\377\\377\\377",
          "\\0\\0\\0\\0\\0\\0\\0\\0more"}) {
        useHelper(std::string("printf '") + frames + "'\n");
        EXPECT_EQ(summary(read(m_folder / "any.pdf")), "cannot be opened") << frames;
    }
    useHelper("printf '\\2\\0\\0\\0\\0\\0\\0\\0\\0\\1\\3\\0\\0\\0a\\377b'\n");
    EXPECT_EQ(summary(read(m_folder / "any.pdf")), "2 pages: none[a\xef\xbf\xbd"
                                                   "b]");
}

TEST_F(PopplerPdfTest, SaysThatTheHelperIsMissing) {
    setenv("OMBREL_PDF_HELPER", (m_folder / "missing").c_str(), 1);
    EXPECT_EQ(summary(read(m_folder / "any.pdf")),
              "The program \"" + (m_folder / "missing").string() + "\" wasn't found.");
}

} // namespace
} // namespace ombrel
