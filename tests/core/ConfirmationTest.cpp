#include "core/Confirmation.h"

#include <gtest/gtest.h>

namespace ombrel {
namespace {

TEST(Confirmation, OfAResetNamesTheProject) {
    const Confirmation asked = resetProjectConfirmation("Field Station");
    EXPECT_EQ(asked.title, "Reset this project?");
    EXPECT_EQ(asked.message,
              "This removes every source, chunk, variant, and test question in \"Field Station\". "
              "You can undo it with \u2318Z right after.");
    EXPECT_EQ(asked.confirm, "Reset Project");
    EXPECT_EQ(asked.cancel, "Cancel");
}

} // namespace
} // namespace ombrel
