// SPDX-License-Identifier: Apache-2.0
// GoogleTest entry point for tests of windows: a QApplication on Qt's offscreen platform.
#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    // Test discovery runs this binary without the test environment, so choose here too.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
