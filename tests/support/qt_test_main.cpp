// SPDX-License-Identifier: Apache-2.0
// GoogleTest entry point for tests that need a Qt event loop on the main thread.
#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
