#include "core/UndoManager.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace ombrel {
namespace {

TEST(UndoManager, PerformsTheNewestActionFirst) {
    UndoManager undo;
    std::string performed;
    undo.registerUndo([&] { performed += 'a'; });
    undo.registerUndo([&] { performed += 'b'; });
    EXPECT_EQ(undo.count(), 2u);
    undo.undo();
    undo.undo();
    EXPECT_EQ(performed, "ba");
    EXPECT_FALSE(undo.canUndo());
}

TEST(UndoManager, DoesNothingWithoutActions) {
    UndoManager undo;
    EXPECT_FALSE(undo.canUndo());
    undo.undo();
    EXPECT_EQ(undo.count(), 0u);
}

TEST(UndoManager, OffersNoRedo) {
    UndoManager undo;
    undo.registerUndo([] {});
    EXPECT_FALSE(undo.canRedo());
    undo.undo();
    EXPECT_FALSE(undo.canRedo());
}

TEST(UndoManager, TellsOfEachChange) {
    UndoManager undo;
    std::vector<std::size_t> counts;
    undo.setChanged([&] { counts.push_back(undo.count()); });
    undo.registerUndo([] {});
    undo.registerUndo([] {});
    undo.undo();
    undo.removeAllActions();
    undo.undo(); // nothing to do, nothing to tell
    EXPECT_EQ(counts, (std::vector<std::size_t>{1, 2, 1, 0}));
}

TEST(UndoManager, LetsGoOfAnActionThatWasPerformedOrRemoved) {
    UndoManager undo;
    const auto held = std::make_shared<int>(1);
    undo.registerUndo([held] {});
    undo.registerUndo([held] {});
    EXPECT_EQ(held.use_count(), 3);
    undo.undo();
    EXPECT_EQ(held.use_count(), 2);
    undo.removeAllActions();
    EXPECT_EQ(held.use_count(), 1);
}

} // namespace
} // namespace ombrel
