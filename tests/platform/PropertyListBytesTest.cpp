#include "platform/PropertyListBytes.h"

#include "tests/support/FileContents.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <random>
#include <unistd.h>

namespace ombrel {
namespace {

std::string noise(std::size_t size) {
    std::mt19937 random(3);
    std::string bytes(size, '\0');
    for (char& byte : bytes) {
        byte = static_cast<char>(random());
    }
    return bytes;
}

TEST(PropertyListBytes, ReadsAFileLikeTheBytesThatItHolds) {
    const test::TemporaryFolder folder;
    const std::string contents = noise(6'000'123); // more than all windows together
    test::writeContents(folder / "file", contents);
    const int descriptor = ::open((folder / "file").c_str(), O_RDONLY);
    PropertyListBytes file(descriptor, contents.size());
    std::mt19937 random(4);
    std::string read;
    for (int i = 0; i < 3000; ++i) {
        const std::size_t offset = random() % contents.size();
        const std::size_t longest = i % 10 == 0 ? 300'000 : 20;
        const std::size_t count = std::min(random() % longest, contents.size() - offset);
        read.assign(count, '\0');
        ASSERT_TRUE(file.read(offset, count, read.data()));
        ASSERT_EQ(read, contents.substr(offset, count));
    }
    char end = 0;
    EXPECT_TRUE(file.read(contents.size(), 0, &end));
    EXPECT_TRUE(file.read(contents.size() - 1, 1, &end));
    EXPECT_FALSE(file.read(contents.size(), 1, &end));
    EXPECT_FALSE(file.read(1, ~std::uint64_t{0}, &end));
    EXPECT_FALSE(file.readFailed());
    ::close(descriptor);
}

TEST(PropertyListBytes, SaysThatAFileBecameShorter) {
    const test::TemporaryFolder folder;
    test::writeContents(folder / "file", noise(500'000));
    const int descriptor = ::open((folder / "file").c_str(), O_RDONLY);
    PropertyListBytes file(descriptor, 500'000);
    char byte = 0;
    ASSERT_TRUE(file.read(10, 1, &byte));
    std::filesystem::resize_file(folder / "file", 100'000);
    EXPECT_FALSE(file.read(400'000, 1, &byte));
    EXPECT_TRUE(file.readFailed());
    EXPECT_EQ(file.readFailure(), "The file became shorter while it was being read");
    ::close(descriptor);
}

TEST(PropertyListBytes, SaysWhyAFileCannotBeRead) {
    const test::TemporaryFolder folder;
    const int descriptor = ::open(folder.path().c_str(), O_RDONLY);
    PropertyListBytes file(descriptor, 10);
    char byte = 0;
    EXPECT_FALSE(file.read(0, 1, &byte));
    EXPECT_EQ(file.readFailure(), "Is a directory");
    ::close(descriptor);
}

} // namespace
} // namespace ombrel
