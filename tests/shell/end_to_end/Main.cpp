#include "flows/ToolChain.h"

#include <QApplication>

#include <cstdio>
#include <gtest/gtest.h>

// The studio without a display. Without a Swift compiler the exit status is 77, or 1 where CI is
// "true".
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (!ombrel::ToolChain().isSwiftToolchainAvailable()) {
        std::printf("Left out: the studio end to end, since there is no Swift tool chain.\n");
        return qgetenv("CI") == "true" ? 1 : 77;
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_SCALE_FACTOR", "1");
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
