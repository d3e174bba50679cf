#include "core/ProjectFile.h"

#include "tests/core/SampleProject.h"

#include "core/JsonEncoder.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

TEST(ProjectFile, ReadsBackEveryRecordAsItWasWritten) {
    const PersistedProject project = test::sampleProject();
    const auto bytes = writeFile(project);
    ASSERT_TRUE(bytes) << bytes.error().message;
    EXPECT_EQ(bytes->substr(0, 8), "bplist00");
    const auto read = readSnapshot(*bytes);
    ASSERT_TRUE(read) << read.error().message;
    EXPECT_EQ(read->snapshot, project);
    EXPECT_FALSE(read->leftBehind.any());
}

TEST(ProjectFile, ReadsBackTheJsonOfASnapshot) {
    const PersistedProject project = test::sampleProject();
    for (const auto layout : {JsonLayout::compact, JsonLayout::indented}) {
        const auto read = readSnapshotJson(encodeJson(project, layout));
        ASSERT_TRUE(read) << read.error().message;
        EXPECT_EQ(read->snapshot, project);
        EXPECT_FALSE(read->leftBehind.any());
    }
}

} // namespace
} // namespace ombrel
